#include "kovanctl/SettingValue.h"

#include <charconv>
#include <cmath>
#include <optional>

#include <nlohmann/json.hpp>

#include "clients_common/CommandLine.h"

namespace kovanctl {

namespace {

using KovanHost::SettingsValue;

template <class T>
std::optional<SettingsValue> parseNumber(const std::string& text) {
    T number{};
    const char* const end = text.data() + text.size();
    const auto [stopped, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || stopped != end || !std::isfinite(static_cast<double>(number))) {
        return std::nullopt;
    }
    return number;
}

std::optional<SettingsValue> parseBool(const std::string& text) {
    if (text == "true" || text == "1") {
        return true;
    }
    return text == "false" || text == "0" ? std::optional<SettingsValue>(false) : std::nullopt;
}

std::optional<SettingsValue> parse(const std::string& type, const std::string& text) {
    if (type == "bool") {
        return parseBool(text);
    }
    if (type == "int") {
        return parseNumber<int>(text);
    }
    return type == "double" ? parseNumber<double>(text) : SettingsValue(text);
}

} // namespace

std::string typeOf(const SettingsValue& value) {
    static const char* const NAMES[] = {"bool", "int", "double", "string"}; // in the order of the variant
    return NAMES[value.index()];
}

SettingsValue parseValue(const std::string& type, const std::string& text) {
    const std::optional<SettingsValue> value = parse(type, text);
    if (!value) {
        throw clients_common::WrongUsage("'" + text + "' is not of type " + type);
    }
    return *value;
}

nlohmann::ordered_json toJson(const SettingsValue& value) {
    return std::visit([](const auto& held) { return nlohmann::ordered_json(held); }, value);
}

std::string toText(const SettingsValue& value) {
    const std::string* const text = std::get_if<std::string>(&value);
    return text != nullptr ? *text : toJson(value).dump();
}

} // namespace kovanctl
