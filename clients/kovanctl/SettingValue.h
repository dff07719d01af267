#pragma once

#include <string>

#include <nlohmann/json_fwd.hpp>

#include "host/Settings.h"

namespace kovanctl {

// A settings value as users write it.

// "bool", "int", "double" or "string".
std::string typeOf(const KovanHost::SettingsValue& value);

// Reads `text` as a value of the named type; throws clients_common::WrongUsage when it is not one. A bool is true or
// false (or 1 or 0), an int is decimal and has 32 bits, a double is finite.
KovanHost::SettingsValue parseValue(const std::string& type, const std::string& text);

nlohmann::ordered_json toJson(const KovanHost::SettingsValue& value);

// A string unchanged, any other value as JSON writes it.
std::string toText(const KovanHost::SettingsValue& value);

} // namespace kovanctl
