#pragma once

#include <memory>
#include <string>

#include "Common/Utils/DelayedTrigger.h"
#include "Common/Utils/ISimpleClock.h"

namespace DAX::Common::Utils {

// Watches a piece of work: armed before it and disarmed after it. Work that outlives the limit gets one fatal log line
// and goes on; nothing is killed. May be armed any number of times, by one thread; arming an armed watchdog, or
// disarming a disarmed one, is an assertion failure.
class SoftWatchdog {
public:
    // Times in seconds; `warnAfterSeconds` may not be greater than `killAfterSeconds` (an assertion).
    SoftWatchdog(const std::string& name, int warnAfterSeconds, int killAfterSeconds);
    SoftWatchdog(const SoftWatchdog&) = delete;
    SoftWatchdog& operator=(const SoftWatchdog&) = delete;
    ~SoftWatchdog();

    void arm();
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
