#pragma once

#include <string>
#include <vector>

#include <boost/filesystem/path.hpp>

namespace DAX::Common::IO {

// Writes a flag file: its existence is what counts, and the lines are for the person who finds it. Each line is one
// chunk and ends with a line feed. An older file is overwritten. When this returns, the file is on its medium and its
// folder is synchronized. Throws as FileSink does, also when something other than a regular file is in its place;
// GenericException when the folder cannot be synchronized. Any thread, but only one at a time for the same file.
void writeFlagFile(const boost::filesystem::path& path, const std::vector<std::string>& lines = {});

// Removes such a file, and synchronizes its folder. Returns false when there was none. Throws
// boost::filesystem::filesystem_error, or GenericException when the folder cannot be synchronized.
bool removeFlagFile(const boost::filesystem::path& path);

} // namespace DAX::Common::IO
