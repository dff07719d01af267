#include "AppendFile.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace KovanHost {

int openForAppending(const std::string& path) {
    return open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644);
}

bool appendLine(int descriptor, std::string line) {
    line += '\n';
    ssize_t written;
    do {
        written = write(descriptor, line.data(), line.size());
    } while (written < 0 && errno == EINTR);
    return written == static_cast<ssize_t>(line.size());
}

} // namespace KovanHost
