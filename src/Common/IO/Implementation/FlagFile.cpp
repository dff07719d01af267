#include "Common/IO/FlagFile.h"

#include <cerrno>

#include <boost/filesystem/operations.hpp>

#include "Common/IO/FileSink.h"
#include "Common/PlatformDependent/Sync.h"
#include "Utility/Utils/ErrInfoStream.h"

namespace DAX::Common::IO {

using Utils::errinfo_description;
using Utils::errinfo_path;

namespace {

// A pipe would block the writer, and a link would create the flag somewhere else.
void throwIfOtherThanFile(const boost::filesystem::path& path) {
    boost::system::error_code ignored; // what cannot be examined cannot be opened either
    const auto type = boost::filesystem::symlink_status(path, ignored).type();
    if (type == boost::filesystem::regular_file || type == boost::filesystem::directory_file ||
        type == boost::filesystem::file_not_found || type == boost::filesystem::status_error) {
        return;
    }
    DAX_THROW(FileSinkIOException(EEXIST), errinfo_path(path) << errinfo_description("Not a regular file."));
}

} // namespace

void writeFlagFile(const boost::filesystem::path& path, const std::vector<std::string>& lines) {
    throwIfOtherThanFile(path);
    FileSink sink(path, true);
    sink.open();
    for (const std::string& line : lines) {
        const std::string chunk = line + '\n';
        sink.writeChunk(reinterpret_cast<const std::uint8_t*>(chunk.data()), chunk.size());
    }
    sink.close();
    PlatformDependent::folder_sync(path.parent_path().string());
}

bool removeFlagFile(const boost::filesystem::path& path) {
    const bool removed = boost::filesystem::remove(path);
    if (removed) {
        PlatformDependent::folder_sync(path.parent_path().string());
    }
    return removed;
}

} // namespace DAX::Common::IO
