#pragma once

#include <string>

namespace DAX {
namespace Service {
namespace ServiceCommon {

// Writes the installation lock file at `path` with `info` in it and verifies what it wrote. Throws when either fails;
// a failure does not remove the file.
void saveInstallationState(std::string path, std::string info);

} // namespace ServiceCommon
} // namespace Service
} // namespace DAX
