#pragma once

#include <string>
#include <vector>

#include <boost/filesystem/path.hpp>

namespace DAX::Common::IO {

// Writes a file whose existence is what counts: with these lines for the person who finds it, each in a chunk of its
// own and ended by a line feed. What stood in it before is gone. It is on its medium, and its folder knows of it, when
// this returns. Throws as FileSink does, also when something that is no regular file is in its place; GenericException
// when the folder cannot be synchronized.
void writeFlagFile(const boost::filesystem::path& path, const std::vector<std::string>& lines = {});

// Removes such a file, for good when this returns. False when there was none. Throws
// boost::filesystem::filesystem_error, or GenericException when the folder cannot be synchronized.
bool removeFlagFile(const boost::filesystem::path& path);

} // namespace DAX::Common::IO
