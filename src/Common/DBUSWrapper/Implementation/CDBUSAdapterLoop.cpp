#include "Common/DBUSWrapper/Implementation/CDBUSAdapterLoop.h"

#include <algorithm>
#include <limits>
#include <utility>

#include <DAXProductionConfig.h>
#include <boost/assert.hpp>
#include <boost/exception/diagnostic_information.hpp>
#include <boost/thread/thread.hpp>

#include "Common/DBUSWrapper/Implementation/CheckTimeout.h"
#include "Common/Logging/LoggingStream.h"
#include "Platform/OperatingSystem/StopNotification.h"
#include "Utility/Utils/KeptInterruption.h"

namespace DAX::Common::DBUSWrapper {

namespace {

// The longest interval that can be told in milliseconds: 24 days.
int inRange(unsigned int seconds) {
    const int longest = std::numeric_limits<int>::max() / 1000;
    return static_cast<int>(std::min(seconds, static_cast<unsigned int>(longest)));
}

} // namespace

CDBUSAdapter::Loop::Guards::Guards(const std::string& objectPath, int stopConditionInterval, int pingInterval)
    : ping("WatchdogPingGuard " + objectPath, stopConditionInterval + pingInterval + 51,
           stopConditionInterval + pingInterval + 62)
    , dispatch("DispatchTimeGuard " + objectPath, 50, 60)
    , notify("NotifyGuard " + objectPath, 1, 2) {}

CDBUSAdapter::Loop::Loop(CDBUSAdapter& adapter, unsigned int stopConditionIntervalInSeconds,
                         unsigned int idleTimeoutInSeconds, unsigned int pingIntervalInSeconds,
                         boost::optional<std::function<bool()>> stopCondition,
                         boost::optional<std::function<void()>> pingFunction)
    : m_adapter(adapter)
    , m_connection(adapter.m_dbusConnectionHandle.get())
    , m_timeoutMs(inRange(stopConditionIntervalInSeconds) * 1000)
    , m_idleTimeoutInSeconds(idleTimeoutInSeconds)
    , m_pingIntervalInSeconds(inRange(pingIntervalInSeconds))
    , m_stopCondition(std::move(stopCondition))
    , m_pingFunction(std::move(pingFunction))
    , m_lastPing(adapter.m_clock->getCurrentTime()) {
    if (!Debug::isProduction()) {
        m_guards = std::make_unique<Guards>(adapter.m_objectPath, inRange(stopConditionIntervalInSeconds),
                                            m_pingIntervalInSeconds);
        m_guards->ping.arm();
    }
}

void CDBUSAdapter::Loop::run() {
    do {
        boost::this_thread::interruption_point();
        Utils::KeptInterruption::raise();
    } while (waitForMessages() && pass());
    if (m_guards) {
        m_guards->ping.disarm();
    }
}

// The call that started the process comes with the answer to the request for the name: it is here before the first
// wait.
bool CDBUSAdapter::Loop::waitForMessages() {
    const int timeoutMs = hasMessages() ? 0 : m_timeoutMs;
    return dbus_connection_read_write(m_connection, timeoutMs) != 0;
}

bool CDBUSAdapter::Loop::pass() {
    bool nothingDispatched = true;
    bool stop = false;
    while (hasMessages()) {
        dispatchGuarded();
        pingIfDue();
        stop = isStopWanted() || stop;
        nothingDispatched = false;
    }
    if (stop) {
        return false;
    }
    if (nothingDispatched) {
        pingIfDue();
        if (isStopWanted()) {
            return false;
        }
    }
    if (m_adapter.m_name->isGone()) {
        finishIdleEnd();
        return false;
    }
    if (m_adapter.m_name->isHeld() && isIdleForTooLong()) {
        m_adapter.m_name->release();
    }
    return true;
}

bool CDBUSAdapter::Loop::hasMessages() const {
    return dbus_connection_get_dispatch_status(m_connection) == DBUS_DISPATCH_DATA_REMAINS;
}

void CDBUSAdapter::Loop::dispatchGuarded() {
    if (m_guards) {
        m_guards->dispatch.arm();
    }
    dispatch();
    if (m_guards) {
        m_guards->dispatch.disarm();
    }
}

void CDBUSAdapter::Loop::dispatch() {
    try {
        dbus_connection_dispatch(m_connection);
    } catch (...) {
        DAX_LOG(FTL)
            << "Throwing exception through C-function dbus_connection_dispatch() is not allowed. Adapter object: "
            << m_adapter.m_objectPath << ". Exception: " << boost::current_exception_diagnostic_information(true);
        BOOST_ASSERT_MSG(false, "Throwing exception through C-function dbus_connection_dispatch() is not allowed.");
    }
}

void CDBUSAdapter::Loop::pingIfDue() {
    const bool fired = !m_pingFunction || checkTimeout(m_lastPing, m_pingIntervalInSeconds, m_pingFunction,
                                                       *m_adapter.m_clock, m_guards ? &m_guards->notify : nullptr);
    if (fired && m_guards) {
        m_guards->ping.disarm();
        m_guards->ping.arm();
    }
}

bool CDBUSAdapter::Loop::isStopWanted() const {
    return m_stopCondition && (*m_stopCondition)();
}

bool CDBUSAdapter::Loop::isIdleForTooLong() const {
    if (m_idleTimeoutInSeconds == 0 || !m_adapter.m_clients.isEmpty()) {
        return false;
    }
    const float elapsed = m_adapter.m_clients.emptyFor();
    DAX_LOG(VERBOSE) << "Persistence in idle state lasts for: " << elapsed << " seconds.";
    return elapsed > static_cast<float>(m_idleTimeoutInSeconds);
}

// The name is given back first, and the loop goes on until that is done: what has been called under the name by then is
// served, and what comes later is for the next daemon.
void CDBUSAdapter::Loop::finishIdleEnd() const {
    Platform::tellThatTheProcessStops(); // first: from now on a call has to start a new one
    dbus_connection_flush(m_connection);
    DAX_LOG(INF) << "Stopping adapter object " << m_adapter.m_objectPath << " due to it being idle for "
                 << m_idleTimeoutInSeconds << " seconds.";
}

} // namespace DAX::Common::DBUSWrapper
