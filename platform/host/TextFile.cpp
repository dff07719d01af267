#include "TextFile.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <system_error>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "OwnFiles.h"

namespace KovanHost {

namespace {

template <class Result>
Result checked(Result result, const std::string& path) {
    if (result < 0) {
        throw std::system_error(errno, std::generic_category(), path);
    }
    return result;
}

void throwIfError(int error, const std::string& path) {
    if (error != 0) {
        throw std::system_error(error, std::generic_category(), path);
    }
}

void refuseLarge(std::size_t size, const std::string& path) {
    if (size > MOST_BYTES) {
        throw std::runtime_error(path + ": larger than " + std::to_string(MOST_BYTES) + " bytes");
    }
}

// A pipe or a device has no complete text. A folder fails at the first read.
void refuseEndless(int file, const std::string& path) {
    struct stat status {};
    checked(fstat(file, &status), path);
    if (!S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode)) {
        throw std::runtime_error(path + ": not a regular file");
    }
}

void removeLeftover(const std::string& path) {
    if (unlink(path.c_str()) != 0 && errno != ENOENT) {
        throw std::system_error(errno, std::generic_category(), path);
    }
}

void writeNew(const std::string& path, const std::string& text) {
    const Descriptor file(checked(makeNew(path, O_WRONLY), path));
    for (std::size_t written = 0; written < text.size();) {
        const ssize_t count = write(file, text.data() + written, text.size() - written);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        written += static_cast<std::size_t>(checked(count, path));
    }
    checked(fsync(file), path);
}

} // namespace

std::optional<std::string> readText(const std::string& path) {
    const int opened = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (opened < 0 && (errno == ENOENT || errno == ENOTDIR)) {
        return std::nullopt;
    }
    const Descriptor file(checked(opened, path));
    refuseEndless(file, path);
    std::string text;
    char buffer[4096];
    while (const ssize_t count = checked(read(file, buffer, sizeof(buffer)), path)) {
        text.append(buffer, static_cast<std::size_t>(count));
        refuseLarge(text.size(), path);
    }
    return text;
}

void replaceText(const std::string& path, const std::string& text) {
    refuseLarge(text.size(), path);
    const std::string fresh = path + ".new";
    removeLeftover(fresh); // of a power cut
    try {
        writeNew(fresh, text);
        checked(std::rename(fresh.c_str(), path.c_str()), path);
    } catch (...) {
        unlink(fresh.c_str());
        throw;
    }
    const std::string folder = std::filesystem::path(path).parent_path();
    throwIfError(syncFolder(folder), folder);
}

void makeFolderOf(const std::string& path) {
    const std::string folder = std::filesystem::path(path).parent_path();
    throwIfError(makeFolders(folder), folder);
}

FileLock::FileLock(const std::string& path)
    : m_descriptor(checked(openOrMake(path, O_RDONLY | O_NOFOLLOW | O_NONBLOCK), path)) {
    while (flock(m_descriptor, LOCK_EX) != 0 && errno == EINTR) {
    }
}

FileLock::~FileLock() {
    close(m_descriptor);
}

} // namespace KovanHost
