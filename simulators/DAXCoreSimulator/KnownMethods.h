#pragma once

#include <string>

namespace DAXCoreSimulator {

// Whether a core answers this method.
bool isCoreMethod(const std::string& name);

} // namespace DAXCoreSimulator
