#pragma once

#include <functional>
#include <memory>

#include <boost/optional.hpp>

#include "Common/DBUSWrapper/Implementation/CDBUSAdapter.h"
#include "Common/Utils/SoftWatchdog.h"

namespace DAX::Common::DBUSWrapper {

// The loop of an adapter over its open connection: waits, dispatches, pings, and finds out when to stop.
class CDBUSAdapter::Loop {
public:
    Loop(CDBUSAdapter& adapter, unsigned int stopConditionIntervalInSeconds, unsigned int idleTimeoutInSeconds,
         unsigned int pingIntervalInSeconds, boost::optional<std::function<bool()>> stopCondition,
         boost::optional<std::function<void()>> pingFunction);

    // Returns when there is reason to stop. An interruption, and what the stop condition and the ping function throw,
    // comes out.
    void run();

private:
    // What watches the loop of software that is not in production. They go in the reverse order.
    struct Guards {
        Guards(const std::string& objectPath, int stopConditionInterval, int pingInterval);

        Utils::SoftWatchdog ping;
        Utils::SoftWatchdog dispatch;
        Utils::SoftWatchdog notify;
    };

    bool waitForMessages();
    bool pass();
    bool hasMessages() const;
    void dispatch();
    void dispatchGuarded();
    void pingIfDue();
    bool isStopWanted() const;
    bool isIdleForTooLong() const;
    void finishIdleEnd() const;

    CDBUSAdapter& m_adapter;
    DBusConnection* m_connection;
    int m_timeoutMs;
    unsigned int m_idleTimeoutInSeconds;
    int m_pingIntervalInSeconds;
    boost::optional<std::function<bool()>> m_stopCondition;
    boost::optional<std::function<void()>> m_pingFunction;
    float m_lastPing;
    std::unique_ptr<Guards> m_guards; // none in production
};

} // namespace DAX::Common::DBUSWrapper
