#pragma once

#include <memory>
#include <string>

#include "Common/Utils/DelayedTrigger.h"
#include "Common/Utils/ISimpleClock.h"

namespace DAX::Common::Utils {

// Watches a piece of work: arm it before and disarm it after. If the work takes longer than the limit, one fatal line
// is logged and the work goes on; nothing is killed. It may be armed any number of times, by one thread.
class SoftWatchdog {
public:
    // Times in seconds. `warnAfterSeconds` only appears in the log, and must not be greater than `killAfterSeconds` (an
    // assertion failure). Starts a thread; throws boost::thread_resource_error when the system has none left.
    SoftWatchdog(const std::string& name, int warnAfterSeconds, int killAfterSeconds);
    SoftWatchdog(const SoftWatchdog&) = delete;
    SoftWatchdog& operator=(const SoftWatchdog&) = delete;
    ~SoftWatchdog();

    // Starts the time. It is an assertion failure when it is armed already.
    void arm();

    // Stops the time. It is an assertion failure when it is not armed. It stays armed when the limit passes.
    void disarm();

private:
    void onKillTimeout();

    std::string m_name;
    int m_warnAfterSeconds;
    int m_killAfterSeconds;
    bool m_armed = false;
    std::unique_ptr<ISimpleClock> m_clock;
    DelayedTrigger m_trigger;
};

} // namespace DAX::Common::Utils
