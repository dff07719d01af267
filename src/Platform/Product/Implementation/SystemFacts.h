#pragma once

#include <string>

#include <system_info.h>

namespace DAX::Platform::SystemFacts {

// How a fact of the device is read: by its number, or by its feature's key. All return the platform's result, 0 for
// success; a failure leaves a text as it was. Any thread may ask.
int read(system_info_key_e key, std::string& value);
int read(const char* key, std::string& value);
int read(const char* key, bool& value);
int read(const char* key, int& value);

// "true" or "false", as the log has it.
const char* textOf(bool value);

} // namespace DAX::Platform::SystemFacts
