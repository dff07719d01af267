#include "Common/IO/RegularFile.h"

#include <algorithm>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Common/IO/FileExceptions.h"
#include "Common/IO/Implementation/Uninterrupted.h"
#include "Utility/Utils/ErrInfoStream.h"

namespace DAX::Common::IO {

using Utils::errinfo_description;
using Utils::errinfo_path;

namespace {

const std::size_t CHUNK_SIZE = 4096;

} // namespace

// Opening a device can have effects of its own, so the file is examined before; and once more afterwards, since another
// file may have taken its place.
RegularFile::RegularFile(const boost::filesystem::path& path, Access access, Links links) : m_path(path.string()) {
    const int follow = links == FOLLOWED ? 0 : AT_SYMLINK_NOFOLLOW;
    struct stat status {};
    if (::fstatat(AT_FDCWD, m_path.c_str(), &status, follow) != 0) {
        fail(BOOST_CURRENT_LOCATION, errno, "Looking at file failed.");
    }
    throwUnlessRegular(status.st_mode);
    const int flags = (access == FOR_READING ? O_RDONLY : O_RDWR) | (links == FOLLOWED ? 0 : O_NOFOLLOW);
    m_descriptor = Utils::FileDescriptor(
        uninterrupted([&] { return ::open(m_path.c_str(), flags | O_NONBLOCK | O_NOCTTY | O_CLOEXEC); }));
    if (!m_descriptor.isOpen()) {
        fail(BOOST_CURRENT_LOCATION, errno, "Opening file failed.");
    }
    if (::fstat(m_descriptor.get(), &status) != 0) {
        fail(BOOST_CURRENT_LOCATION, errno, "Looking at file failed.");
    }
    throwUnlessRegular(status.st_mode);
    m_size = static_cast<std::size_t>(status.st_size);
}

std::string RegularFile::readText(std::size_t limit) {
    std::string text;
    char chunk[CHUNK_SIZE];
    for (ssize_t count = 1; count > 0 && text.size() <= limit;) {
        const std::size_t wanted = std::min(sizeof(chunk), limit - text.size() + 1);
        count = uninterrupted([&] { return ::read(m_descriptor.get(), chunk, wanted); });
        if (count < 0) {
            fail(BOOST_CURRENT_LOCATION, errno, "Reading from file failed.");
        }
        text.append(chunk, static_cast<std::size_t>(count));
    }
    if (text.size() > limit) {
        fail(BOOST_CURRENT_LOCATION, 0, "File is larger than " + std::to_string(limit) + " bytes.");
    }
    if (text.size() > m_size) {
        fail(BOOST_CURRENT_LOCATION, 0, "File is manipulated by someone after file open.");
    }
    return text;
}

void RegularFile::throwUnlessRegular(unsigned int mode) const {
    if (!S_ISREG(mode)) {
        fail(BOOST_CURRENT_LOCATION, 0, "Not a regular file.");
    }
}

void RegularFile::fail(const boost::source_location& site, int errnoValue, const std::string& description) const {
    DAX_THROW_AT(site, FileStreamIOException(errnoValue), errinfo_path(m_path) << errinfo_description(description));
}

} // namespace DAX::Common::IO
