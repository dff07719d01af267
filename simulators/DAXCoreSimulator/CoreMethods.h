#pragma once

#include <string>

namespace DAXCoreSimulator {

// True for the methods that a core answers.
bool isCoreMethod(const std::string& name);

} // namespace DAXCoreSimulator
