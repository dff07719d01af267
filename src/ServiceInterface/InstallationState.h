#pragma once

#include <string>

namespace DAX::Service::ServiceCommon {

// Writes the installation lock file at `path` with `info` in it and verifies what it wrote. Throws what the file
// throws, and GenericException when the file that was read back is not intact; a failure does not remove it.
void saveInstallationState(std::string path, std::string info);

} // namespace DAX::Service::ServiceCommon
