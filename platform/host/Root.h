#pragma once

#include <string>

namespace KovanHost {

// The path of a file of the simulated device: `relative` (it begins with no "/") under the folder that the environment
// variable KOVAN_ROOT names, or under "/" when that is unset or empty. Looked up at each call.
std::string underRoot(const std::string& relative);

} // namespace KovanHost
