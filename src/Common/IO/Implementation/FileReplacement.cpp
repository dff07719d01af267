#include "Common/IO/FileReplacement.h"

#include <cstdio>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Common/IO/FileExceptions.h"
#include "Common/IO/Implementation/Uninterrupted.h"
#include "Common/PlatformDependent/Sync.h"
#include "Utility/Utils/ErrInfoStream.h"

namespace DAX::Common::IO {

using Utils::errinfo_description;
using Utils::errinfo_path;
using Utils::FileDescriptor;

namespace {

const mode_t FIRST_MODE = 0644;
const mode_t PERMISSIONS = 0777;

bool isWritable(const std::string& path) {
    const int flags = O_WRONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    return FileDescriptor(uninterrupted([&] { return ::open(path.c_str(), flags); })).isOpen();
}

} // namespace

FileReplacement::FileReplacement(const boost::filesystem::path& path)
    : m_path(path.string()), m_newPath(m_path + ".new") {
    struct stat old {};
    const bool exists = ::lstat(m_path.c_str(), &old) == 0;
    if (!exists && errno != ENOENT) {
        fail(BOOST_CURRENT_LOCATION, errno, m_path, "Looking at file failed.");
    }
    if (exists && S_ISDIR(old.st_mode)) {
        fail(BOOST_CURRENT_LOCATION, EISDIR, m_path, "Opening file failed.");
    }
    const bool isRegular = exists && S_ISREG(old.st_mode);
    if (isRegular && !isWritable(m_path)) {
        fail(BOOST_CURRENT_LOCATION, errno, m_path, "Opening file failed.");
    }
    open();
    if (isRegular) {
        takeOver(old.st_mode & PERMISSIONS, old.st_uid, old.st_gid);
    }
}

FileReplacement::~FileReplacement() {
    if (m_made) {
        ::unlink(m_newPath.c_str());
    }
}

void FileReplacement::open() {
    if (::unlink(m_newPath.c_str()) != 0 && errno != ENOENT) {
        fail(BOOST_CURRENT_LOCATION, errno, m_newPath, "Removing an older new file failed.");
    }
    const int flags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    m_descriptor = FileDescriptor(uninterrupted([&] { return ::open(m_newPath.c_str(), flags, FIRST_MODE); }));
    if (!m_descriptor.isOpen()) {
        fail(BOOST_CURRENT_LOCATION, errno, m_newPath, "Opening file failed.");
    }
    m_made = true;
}

// The results do not matter: only the superuser can give files away, so for other users the new file is their own.
void FileReplacement::takeOver(unsigned int mode, unsigned int owner, unsigned int group) const {
    const bool isGiven = ::fchown(m_descriptor.get(), owner, group) == 0;
    static_cast<void>(isGiven);
    static_cast<void>(::fchmod(m_descriptor.get(), mode));
}

void FileReplacement::write(const std::string& text) {
    for (std::size_t written = 0; written < text.size();) {
        const ssize_t count =
            uninterrupted([&] { return ::write(m_descriptor.get(), text.data() + written, text.size() - written); });
        if (count < 0 && errno == ENOSPC) {
            DAX_THROW(FileSinkNotEnoughSpaceException(ENOSPC), errinfo_path(m_newPath)
                                                                   << errinfo_description("No space left on device."));
        }
        if (count < 0) {
            fail(BOOST_CURRENT_LOCATION, errno, m_newPath, "Writing to file failed.");
        }
        written += static_cast<std::size_t>(count);
    }
}

void FileReplacement::commit() {
    // The order matters: the content must be on the medium before it has the file's name.
    PlatformDependent::file_sync(m_descriptor.get());
    if (::close(m_descriptor.release()) != 0) {
        fail(BOOST_CURRENT_LOCATION, errno, m_newPath, "Closing file failed.");
    }
    if (std::rename(m_newPath.c_str(), m_path.c_str()) != 0) {
        fail(BOOST_CURRENT_LOCATION, errno, m_path, "Renaming file failed.");
    }
    m_made = false;
    PlatformDependent::folder_sync(boost::filesystem::path(m_path).parent_path().string());
}

void FileReplacement::fail(const boost::source_location& site, int errnoValue, const std::string& path,
                           const char* description) const {
    DAX_THROW_AT(site, FileSinkIOException(errnoValue), errinfo_path(path) << errinfo_description(description));
}

} // namespace DAX::Common::IO
