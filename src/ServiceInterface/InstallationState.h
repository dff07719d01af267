#pragma once

#include <string>

#include <boost/optional.hpp>

namespace DAX::Service::ServiceCommon {

// Writes the installation lock file at `path` with `info` in it, and reads it back to verify it. Throws what FileSink
// and FileStream throw, serializers::lossy_conversion for an `info` of 4 GiB or more, and GenericException when the
// file that was read back is not intact. A failure does not remove the file, so the lock may be in force afterwards.
void saveInstallationState(const std::string& path, const std::string& info);

// The `info` of the installation lock file at `path`. Empty when the file is torn: it is not intact from its length to
// its checksum, as after a full disk or a loss of power while it was written. Throws FileStreamIOException when it
// cannot be read. Waits for a writer when it is a named pipe.
boost::optional<std::string> loadInstallationState(const std::string& path);

} // namespace DAX::Service::ServiceCommon
