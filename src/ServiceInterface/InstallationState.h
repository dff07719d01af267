#pragma once

#include <string>

namespace DAX::Service::ServiceCommon {

// Writes the installation lock file at `path` with `info` in it, and reads it back to verify it. Throws what FileSink
// and FileStream throw, serializers::lossy_conversion for an `info` of 4 GiB or more, and GenericException when the
// file that was read back is not intact. A failure does not remove the file, so the lock may be in force afterwards.
void saveInstallationState(const std::string& path, const std::string& info);

} // namespace DAX::Service::ServiceCommon
