#pragma once

#include <atomic>
#include <chrono>
#include <csignal>

namespace daxctl {

// `timeout` sends its signal to the process and then to the group, the end of a login session two different ones. What
// comes within this time is one interruption.
inline constexpr std::chrono::milliseconds ONE_INTERRUPTION{100};

// Blocks SIGINT, SIGTERM and SIGHUP, except those that the process was started with ignored, so that a command can look
// for them when it is ready and end in good order. Make one for the process, before there are other threads. Any thread
// may ask it.
class Interruption {
public:
    Interruption();
    ~Interruption();
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;

    // Waits for at most `time`. True as soon as a signal has come; from then on it does not wait.
    bool wait(std::chrono::milliseconds time);

    // The signal that comes within `time`, 0 when none does. It counts as a request for the end as well.
    int next(std::chrono::milliseconds time);

    bool requested() { return wait(std::chrono::milliseconds(0)); }

    // The first signal that it has found; 0 before that.
    int first() const { return m_first; }

    // Those that it blocks.
    const sigset_t& signals() const { return m_signals; }

private:
    const sigset_t m_signals;
    std::atomic<int> m_first{0};
};

} // namespace daxctl
