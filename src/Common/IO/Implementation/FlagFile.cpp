#include "Common/IO/FlagFile.h"

#include <cerrno>

#include <boost/filesystem/operations.hpp>
#include <fcntl.h>
#include <sys/stat.h>

#include "Common/IO/FileSink.h"
#include "Common/IO/Implementation/Uninterrupted.h"
#include "Common/PlatformDependent/Sync.h"
#include "Utility/Utils/ErrInfoStream.h"

namespace DAX::Common::IO {

using Utils::errinfo_description;
using Utils::errinfo_path;

namespace {

// A pipe would hold the writer up, and a link would have the flag made elsewhere. A folder says of itself that it
// cannot be written.
void throwIfOther(unsigned int mode, const boost::filesystem::path& path) {
    if (!S_ISREG(mode) && !S_ISDIR(mode)) {
        DAX_THROW(FileSinkIOException(EEXIST), errinfo_path(path) << errinfo_description("Not a regular file."));
    }
}

// To open a device may be an act of its own, so it is looked at before; and again behind, since another file may have
// taken its place. What cannot be looked at cannot be opened either.
Utils::FileDescriptor openEmptied(const boost::filesystem::path& path) {
    struct stat status {};
    if (::fstatat(AT_FDCWD, path.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0) {
        throwIfOther(status.st_mode, path);
    }
    const int flags = O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    Utils::FileDescriptor file(uninterrupted([&] { return ::open(path.c_str(), flags, 0666); }));
    if (!file.isOpen() || ::fstat(file.get(), &status) != 0) {
        DAX_THROW(FileSinkIOException(errno), errinfo_path(path));
    }
    throwIfOther(status.st_mode, path);
    return file;
}

} // namespace

void writeFlagFile(const boost::filesystem::path& path, const std::vector<std::string>& lines) {
    FileSink sink(path, openEmptied(path));
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
