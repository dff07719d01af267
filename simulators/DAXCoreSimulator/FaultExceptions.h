#pragma once

#include <string>

namespace DAXCoreSimulator {

// True for the names of the exceptions that cross the bus.
bool isExceptionName(const std::string& name);

// Throws the exception of this name, with the support code unless it is empty and with the text.
[[noreturn]] void raiseException(const std::string& name, const std::string& supportCode, const std::string& text);

} // namespace DAXCoreSimulator
