#include "Common/Utils/SoftWatchdog.h"

#include <ios>

#include "Common/Logging/LoggingStream.h"
#include "Utility/Utils/DAXAssert.h"

namespace DAX::Common::Utils {

SoftWatchdog::SoftWatchdog(const std::string& name, int warnAfterSeconds, int killAfterSeconds)
    : m_name(name), m_warnAfterSeconds(warnAfterSeconds), m_killAfterSeconds(killAfterSeconds), m_trigger(name) {
    BOOST_ASSERT(m_warnAfterSeconds <= m_killAfterSeconds);
    DAX_LOG(INF) << "SoftWatchdog '" << m_name << "' created. Warn after: " << m_warnAfterSeconds
                 << ", Kill after: " << m_killAfterSeconds << ".";
}

SoftWatchdog::~SoftWatchdog() {
    if (m_armed) {
        DAX_LOG(INF) << "SoftWatchdog '" << m_name << "' destroyed after " << std::fixed << m_clock->getCurrentTime()
                     << " seconds. It's armed. Warn after: " << m_warnAfterSeconds
                     << ", Kill after: " << m_killAfterSeconds << ".";
    }
}

void SoftWatchdog::arm() {
    BOOST_ASSERT(!m_armed);
    m_armed = true;
    m_clock = ISimpleClock::createClock();
    m_trigger.arm(boost::chrono::seconds(m_killAfterSeconds), [this] { onKillTimeout(); });
}

void SoftWatchdog::disarm() {
    BOOST_ASSERT(m_armed);
    m_armed = false;
    m_clock->getCurrentTime(); // the result is not used: there is no warning
    m_trigger.cancel();
    m_clock.reset();
}

void SoftWatchdog::onKillTimeout() {
    DAX_LOG(FTL) << "SoftWatchdog '" << m_name << "' could kill the process after " << m_killAfterSeconds
                 << " seconds. Exactly after " << std::fixed << m_clock->getCurrentTime()
                 << " seconds, but do not do this";
}

} // namespace DAX::Common::Utils
