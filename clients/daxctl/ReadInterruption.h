#pragma once

#include <csignal>

namespace daxctl {

// While it lives, SIGINT, SIGTERM and SIGHUP, except those that the process was started with ignored, do not end the
// process: a read that waits fails with EINTR, and requested() is true. One at a time.
class ReadInterruption {
public:
    ReadInterruption();
    ~ReadInterruption();
    ReadInterruption(const ReadInterruption&) = delete;
    ReadInterruption& operator=(const ReadInterruption&) = delete;

    // Whether one of these signals came since the latest object was made. That stays true after the end of the object.
    // The thread that made the object calls it, or a signal handler.
    static bool requested();

private:
    static constexpr int SIGNALS[] = {SIGINT, SIGTERM, SIGHUP};

    struct sigaction m_before[3] = {};
};

} // namespace daxctl
