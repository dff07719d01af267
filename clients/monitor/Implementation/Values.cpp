#include "monitor/Values.h"

#include <cstdio>

#include <nlohmann/json.hpp>

#include "Utility/Utils/Hexadecimal.h"
#include "clients_common/Printable.h"

namespace monitor {

namespace {

using DAX::Common::Utils::toHexadecimal;
using Form = DAX::DAXIPC::DBUSLowLevel::TypeDescription::Form;

std::string bytesAsText(const DecodedValue& value, std::size_t most) {
    const auto& bytes = std::get<std::string>(value.value);
    const std::size_t count = bytes.size() + value.omitted;
    const bool isCut = bytes.size() * 2 > most || value.omitted > 0;
    const std::string shown = toHexadecimal(std::string_view(bytes).substr(0, most / 2));
    return "<" + std::to_string(count) + (count == 1 ? " byte" : " bytes") + (shown.empty() ? "" : ": ") + shown +
           (isCut ? "..." : "") + ">";
}

// The name of an enumeration's number; empty when it has none.
std::string nameOf(const DecodedValue& value, std::int64_t number) {
    const auto found = value.type->names.find(static_cast<int>(number));
    return found == value.type->names.end() ? std::string() : found->second;
}

std::string numberAsText(const DecodedValue& value, std::int64_t number) {
    const std::string name = nameOf(value, number);
    return name.empty() ? std::to_string(number) : name;
}

std::string listAsText(const DecodedValue& list, std::size_t most) {
    std::string text;
    for (const DecodedValue& element : list.children) {
        text += (text.empty() ? "" : ", ") + valueAsText(element, most);
    }
    if (list.omitted > 0) {
        text += (text.empty() ? "" : ", ") + std::to_string(list.omitted) + " more";
    }
    return "[" + text + "]";
}

std::string recordAsText(const DecodedValue& record, std::size_t most) {
    std::string text;
    for (const DecodedValue& field : record.children) {
        text += (text.empty() ? "" : ", ") + field.name + ": " + valueAsText(field, most);
    }
    return "{" + text + "}";
}

std::string fractionAsText(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%g", value);
    return text;
}

} // namespace

std::string valueAsText(const DecodedValue& value, std::size_t most) {
    if (value.type == nullptr) {
        return "?"; // the archive broke before it
    }
    if (const auto* flag = std::get_if<bool>(&value.value)) {
        return *flag ? "true" : "false";
    }
    if (const auto* number = std::get_if<std::int64_t>(&value.value)) {
        return numberAsText(value, *number);
    }
    if (const auto* fraction = std::get_if<double>(&value.value)) {
        return fractionAsText(*fraction);
    }
    if (const auto* text = std::get_if<std::string>(&value.value)) {
        return value.type->form == Form::BYTES ? bytesAsText(value, most)
                                               : "\"" + clients_common::printable(*text, most) + "\"";
    }
    switch (value.type->form) {
    case Form::LIST:
        return listAsText(value, most);
    case Form::RECORD:
        return recordAsText(value, most);
    case Form::OPTIONAL:
        return value.children.empty() ? "none" : valueAsText(value.children[0], most);
    default:
        return "?"; // the archive broke in it
    }
}

std::string valuesAsText(const std::vector<DecodedValue>& values, std::size_t most) {
    std::string text;
    for (const DecodedValue& value : values) {
        text += (text.empty() ? "" : " ") + value.name + "=" + valueAsText(value, most);
    }
    return text;
}

nlohmann::ordered_json valueAsJson(const DecodedValue& value) {
    if (value.type == nullptr) {
        return nullptr;
    }
    if (const auto* flag = std::get_if<bool>(&value.value)) {
        return *flag;
    }
    if (const auto* number = std::get_if<std::int64_t>(&value.value)) {
        const std::string name = nameOf(value, *number);
        return name.empty() ? nlohmann::ordered_json(*number) : nlohmann::ordered_json(name);
    }
    if (const auto* fraction = std::get_if<double>(&value.value)) {
        return *fraction;
    }
    if (const auto* text = std::get_if<std::string>(&value.value)) {
        return value.type->form == Form::BYTES ? toHexadecimal(*text) : *text;
    }
    switch (value.type->form) {
    case Form::LIST: {
        auto list = nlohmann::ordered_json::array();
        for (const DecodedValue& element : value.children) {
            list.push_back(valueAsJson(element));
        }
        return list;
    }
    case Form::RECORD:
        return valuesAsJson(value.children);
    case Form::OPTIONAL:
        return value.children.empty() ? nlohmann::ordered_json() : valueAsJson(value.children[0]);
    default:
        return nullptr;
    }
}

nlohmann::ordered_json valuesAsJson(const std::vector<DecodedValue>& values) {
    auto object = nlohmann::ordered_json::object();
    for (const DecodedValue& value : values) {
        object[value.name] = valueAsJson(value);
    }
    return object;
}

std::size_t omittedIn(const std::vector<DecodedValue>& values) {
    std::size_t omitted = 0;
    for (const DecodedValue& value : values) {
        omitted += value.omitted + omittedIn(value.children);
    }
    return omitted;
}

} // namespace monitor
