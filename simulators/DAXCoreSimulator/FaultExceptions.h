#pragma once

#include <string>

namespace DAXCoreSimulator {

// Whether this is the name of an exception that crosses the bus.
bool isExceptionName(const std::string& name);

// Throws the exception of this name with the text, and with the support code unless that is empty.
[[noreturn]] void raiseException(const std::string& name, const std::string& supportCode, const std::string& text);

} // namespace DAXCoreSimulator
