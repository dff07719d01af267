#pragma once

#include <string>

namespace KovanHost {

// The path of a file of the simulated device: `relative`, which does not begin with "/", under the folder that the
// environment variable KOVAN_ROOT names, or under "/" when the variable is unset or empty. The variable is read at each
// call.
std::string underRoot(const std::string& relative);

} // namespace KovanHost
