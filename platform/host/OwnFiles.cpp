#include "OwnFiles.h"

#include <cerrno>
#include <filesystem>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace KovanHost {

Descriptor::~Descriptor() {
    if (m_number >= 0) {
        const int before = errno;
        close(m_number);
        errno = before;
    }
}

int makeNew(const std::string& path, int flags) {
    const int file = open(path.c_str(), flags | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, FILE_MODE);
    if (file >= 0) {
        fchmod(file, FILE_MODE); // gives back what the umask took away
    }
    return file;
}

int openOrMake(const std::string& path, int flags) {
    const int made = makeNew(path, flags);
    if (made >= 0 || errno != EEXIST) {
        return made;
    }
    const int opened = open(path.c_str(), flags | O_CLOEXEC);
    if (opened >= 0 || errno != ENOENT) {
        return opened;
    }
    return open(path.c_str(), flags | O_CREAT | O_CLOEXEC, FILE_MODE); // for a link to a file that does not exist yet
}

int makeFolders(const std::string& folder) {
    std::error_code ignored;
    if (folder.empty() || std::filesystem::is_directory(folder, ignored)) {
        return 0;
    }
    const std::string above = std::filesystem::path(folder).parent_path();
    if (const int error = above == folder ? 0 : makeFolders(above)) {
        return error;
    }
    if (mkdir(folder.c_str(), FOLDER_MODE) == 0) {
        return chmod(folder.c_str(), FOLDER_MODE) == 0 ? 0 : errno;
    }
    if (errno != EEXIST) {
        return errno;
    }
    return std::filesystem::is_directory(folder, ignored) ? 0 : ENOTDIR;
}

int syncFolder(const std::string& folder) {
    const Descriptor opened(open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (opened < 0) {
        return errno;
    }
    return fsync(opened) == 0 || errno == EINVAL ? 0 : errno; // some file systems cannot do it
}

} // namespace KovanHost
