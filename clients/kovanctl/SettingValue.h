#pragma once

#include <string>

#include <nlohmann/json.hpp>

#include "host/Settings.h"

namespace kovanctl {

// A settings value in a person's words.

// "bool", "int", "double" or "string".
std::string typeOf(const KovanHost::SettingsValue& value);

// The value of the named type that `text` says; clients_common::WrongUsage when it says none. A bool is true or false
// (or 1 or 0), an int is decimal and has 32 bits, a double is finite.
KovanHost::SettingsValue parseValue(const std::string& type, const std::string& text);

nlohmann::ordered_json toJson(const KovanHost::SettingsValue& value);

// A string as it is, anything else as JSON writes it.
std::string toText(const KovanHost::SettingsValue& value);

} // namespace kovanctl
