#include "AppendFile.h"

#include <cerrno>
#include <cstdio>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "OwnFiles.h"

namespace KovanHost {

namespace {

bool isFull(int log) {
    struct stat status {};
    return fstat(log, &status) == 0 && S_ISREG(status.st_mode) && status.st_size >= MOST_LOG_BYTES;
}

// Whether the name is free for a new log. All processes that found this log full wait for each other. The first one
// renames it; the others then see another file, or none, under its name.
bool setAside(int log, const std::string& path) {
    while (flock(log, LOCK_EX) != 0 && errno == EINTR) {
    }
    struct stat opened {};
    struct stat named {};
    if (fstat(log, &opened) != 0) {
        return false;
    }
    if (stat(path.c_str(), &named) != 0 || opened.st_ino != named.st_ino || opened.st_dev != named.st_dev) {
        return true;
    }
    return std::rename(path.c_str(), (path + ".1").c_str()) == 0;
}

// A full log that cannot be renamed goes on growing: no line may be lost.
int openLog(const std::string& path) {
    int log = openForAppending(path);
    while (log >= 0 && isFull(log) && setAside(log, path)) {
        close(log);
        log = openForAppending(path);
    }
    return log;
}

} // namespace

// O_NONBLOCK makes the opening of a pipe that nobody reads fail instead of wait; for a regular file it changes nothing.
int openForAppending(const std::string& path) {
    return openOrMake(path, O_WRONLY | O_APPEND | O_NONBLOCK);
}

bool appendLine(int descriptor, std::string line) {
    line += '\n';
    ssize_t written;
    do {
        written = write(descriptor, line.data(), line.size());
    } while (written < 0 && errno == EINTR);
    return written == static_cast<ssize_t>(line.size());
}

bool appendToLog(const std::string& path, const std::string& line) {
    const Descriptor log(openLog(path));
    return log >= 0 && appendLine(log, line);
}

} // namespace KovanHost
