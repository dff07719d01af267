#include "clients/daxctl/StandardError.h"

#include <cstdio>
#include <cstdlib>
#include <stdexcept>

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

namespace DAX::Tests {

namespace {

int require(int result, const char* what) {
    if (result < 0) {
        throw std::runtime_error(what);
    }
    return result;
}

struct Ends {
    int reading;
    int writing;
};

Ends openPipe() {
    int ends[2];
    require(pipe2(ends, O_CLOEXEC), "pipe2");
    return {ends[0], ends[1]};
}

Ends openTerminal() {
    const int reading = require(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC), "posix_openpt");
    require(grantpt(reading), "grantpt");
    require(unlockpt(reading), "unlockpt");
    const int writing = require(open(ptsname(reading), O_RDWR | O_NOCTTY | O_CLOEXEC), "open");
    termios settings;
    require(tcgetattr(writing, &settings), "tcgetattr");
    cfmakeraw(&settings);
    require(tcsetattr(writing, TCSANOW, &settings), "tcsetattr");
    return {reading, writing};
}

} // namespace

StandardError::StandardError(Kind kind) : m_original(require(dup(STDERR_FILENO), "dup")) {
    const Ends ends = kind == Kind::PIPE ? openPipe() : openTerminal();
    m_reading = ends.reading;
    dup2(ends.writing, STDERR_FILENO);
    close(ends.writing);
}

StandardError::~StandardError() {
    putBack();
    close(m_reading);
}

void StandardError::putBack() {
    if (m_original >= 0) {
        std::fflush(stderr);
        dup2(m_original, STDERR_FILENO);
        close(m_original);
        m_original = -1;
    }
}

std::string StandardError::text() {
    putBack();
    std::string all;
    char part[256];
    for (ssize_t count = 0; (count = read(m_reading, part, sizeof part)) > 0;) {
        all.append(part, static_cast<std::size_t>(count));
    }
    return all;
}

} // namespace DAX::Tests
