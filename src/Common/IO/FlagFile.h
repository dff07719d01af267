#pragma once

#include <string>
#include <vector>

#include <boost/filesystem/path.hpp>

namespace DAX {
namespace Common {
namespace IO {

// Writes a file whose existence is what counts: with these lines for the person who finds it, each in a chunk of its
// own and ended by a line feed. What stood in it before is gone. It is on its medium when this returns. Throws as
// FileSink does.
void writeFlagFile(const boost::filesystem::path& path, const std::vector<std::string>& lines = {});

} // namespace IO
} // namespace Common
} // namespace DAX
