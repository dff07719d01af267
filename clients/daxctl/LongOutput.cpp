#include "daxctl/LongOutput.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>

#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include "clients_common/CommandLine.h"
#include "daxctl/EndRequest.h"

namespace daxctl {

namespace {

const std::size_t BUFFER = std::size_t{64} * 1024;

// Also when nothing has been written since the reader went.
bool hasReader() {
    pollfd output{STDOUT_FILENO, 0, 0};
    return ::poll(&output, 1, 0) != 1 || (output.revents & POLLERR) == 0;
}

bool canWrite() {
    const int pauseMs = 50;
    pollfd output{STDOUT_FILENO, POLLOUT, 0};
    return ::poll(&output, 1, pauseMs) == 1;
}

} // namespace

LongOutput::Buffer::Buffer(EndAge endAge) : m_endAge(std::move(endAge)), m_bytes(BUFFER) {
    restart();
}

void LongOutput::Buffer::restart() {
    setp(m_bytes.data(), m_bytes.data() + m_bytes.size());
}

bool LongOutput::Buffer::writeOut() {
    using Clock = std::chrono::steady_clock;
    auto waitsSince = Clock::now();
    const char* next = pbase();
    while (next != pptr() && !isGivenUp && error == 0) {
        // What a pipe takes without a wait when it takes anything.
        const auto size = std::min<std::size_t>(static_cast<std::size_t>(pptr() - next), PIPE_BUF);
        const ssize_t written = canWrite() ? ::write(STDOUT_FILENO, next, size) : 0;
        if (written > 0) {
            next += written;
            waitsSince = Clock::now();
        } else if (written < 0 && errno != EINTR && errno != EAGAIN) {
            error = errno;
        }
        isGivenUp = m_endAge() > PATIENCE && Clock::now() - waitsSince > PATIENCE;
    }
    restart();
    return !isGivenUp && error == 0;
}

LongOutput::Buffer::int_type LongOutput::Buffer::overflow(int_type letter) {
    if (!writeOut()) {
        return traits_type::eof();
    }
    if (!traits_type::eq_int_type(letter, traits_type::eof())) {
        sputc(traits_type::to_char_type(letter));
    }
    return traits_type::not_eof(letter);
}

int LongOutput::Buffer::sync() {
    return writeOut() ? 0 : -1;
}

LongOutput::LongOutput() : LongOutput(EndRequest::age) {}

LongOutput::LongOutput(EndAge endAge) : m_before(std::signal(SIGPIPE, SIG_IGN)), m_buffer(std::move(endAge)) {}

LongOutput::~LongOutput() {
    std::signal(SIGPIPE, m_before);
}

bool LongOutput::flush() {
    m_stream.flush();
    if (m_buffer.isGivenUp || m_buffer.error == EPIPE || !hasReader()) {
        return false;
    }
    if (m_buffer.error != 0) {
        throw clients_common::Refusal(std::string("The standard output cannot be written: ") +
                                      std::strerror(m_buffer.error));
    }
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

bool printUnlessInterrupted(const std::string& text, Interruption& interruption) {
    using std::chrono::milliseconds;
    LongOutput output([&] { return interruption.requested() ? milliseconds::max() : milliseconds(0); });
    output.stream() << text;
    const bool isRead = output.flush();
    if (!isRead) {
        std::fprintf(stderr, "daxctl: The standard output cannot be written: nobody reads it\n");
    }
    return isRead;
}

} // namespace daxctl
