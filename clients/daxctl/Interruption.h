#pragma once

#include <chrono>
#include <csignal>

namespace daxctl {

// SIGINT, SIGTERM and SIGHUP, unless the process was started with them ignored, held back from the moment this object
// is made, so that a command can look for them at its own pace and end in good order. One for the process, made before
// there are other threads.
class Interruption {
public:
    Interruption();
    ~Interruption();
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;

    // Waits for at most `time`; true as soon as a signal has come, and from then on at once.
    bool wait(std::chrono::milliseconds time);

    // The signal that comes within `time`; 0 when none does. It counts as a request as well.
    int next(std::chrono::milliseconds time);

    bool requested() { return wait(std::chrono::milliseconds(0)); }

private:
    sigset_t m_signals;
    bool m_requested = false;
};

} // namespace daxctl
