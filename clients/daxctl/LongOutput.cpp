#include "daxctl/LongOutput.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>

#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include "clients_common/Output.h"

namespace daxctl {

namespace {

// Also when nothing has been written since the reader went.
bool hasReader() {
    pollfd output{STDOUT_FILENO, 0, 0};
    return ::poll(&output, 1, 0) != 1 || (output.revents & POLLERR) == 0;
}

} // namespace

LongOutput::LongOutput() : m_before(std::signal(SIGPIPE, SIG_IGN)) {}

LongOutput::~LongOutput() {
    std::signal(SIGPIPE, m_before);
}

bool LongOutput::flush() {
    std::cout.flush();
    if (!hasReader()) {
        clients_common::forgetLostOutput(); // that nobody reads is no failure
        return false;
    }
    clients_common::flushOutput();
    return true;
}

bool LongOutput::isColourful() {
    const char* const terminal = std::getenv("TERM");
    return ::isatty(STDOUT_FILENO) != 0 && std::getenv("NO_COLOR") == nullptr && terminal != nullptr &&
           std::strcmp(terminal, "dumb") != 0;
}

std::size_t LongOutput::width() {
    winsize size{};
    return ::isatty(STDOUT_FILENO) != 0 && ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

} // namespace daxctl
