#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <string>
#include <thread>

#include "Utility/Utils/FileDescriptor.h"
#include "daxctl/Interruption.h"

namespace daxctl {

// For a stretch of a command that calls the daemon: a call cannot be broken off, and one to a daemon that is silent
// takes as long as the library waits. Once an interruption has come, also before the stretch, the stretch may go on for
// `patience`. Then `sayWhy` is called, on a thread of its own, and the process ends with EXIT_REFUSED. A further signal
// ends the process at once, as signals do. One at a time.
class SilenceGuard {
public:
    // So long is a daemon that answers at all not silent, and a person still content.
    static constexpr std::chrono::milliseconds PATIENCE{750};

    SilenceGuard(Interruption& interruption, std::function<void()> sayWhy,
                 std::chrono::milliseconds patience = PATIENCE);

    // Ends the stretch.
    ~SilenceGuard();
    SilenceGuard(const SilenceGuard&) = delete;
    SilenceGuard& operator=(const SilenceGuard&) = delete;

    // The daemon has answered, so the time begins anew. The thread that made the guard calls it.
    void heard();

private:
    using Clock = std::chrono::steady_clock;

    void watch();
    bool waitForInterruption();
    bool waitForSilence();
    bool hasEnded(std::chrono::milliseconds within) const;

    Interruption& m_interruption;
    const std::function<void()> m_sayWhy;
    const std::chrono::milliseconds m_patience;
    const DAX::Common::Utils::FileDescriptor m_signals; // readable while a signal is pending
    const DAX::Common::Utils::FileDescriptor m_end;     // readable once the stretch has ended
    std::atomic<Clock::time_point> m_heard;
    std::thread m_thread; // last: it uses the others
};

// Tells on standard error that the command was interrupted, and the text, with --json also in a document
// {"outcome": "interrupted", …}, unless the reader of standard output stands still. It may be `sayWhy`.
void reportInterruption(const std::string& text, bool json);

} // namespace daxctl
