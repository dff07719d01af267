#pragma once

#include <atomic>
#include <chrono>
#include <mutex>

#include <boost/optional.hpp>
#include <dbus/dbus.h>

#include "Common/DBUSWrapper/Implementation/DBUSResources.h"
#include "Common/DBUSWrapper/Implementation/IdleReader.h"

namespace DAX::Common::DBUSWrapper {

// Carries calls over a connection that serves nothing else. Whatever arrives and is not the reply that a call waits for
// (signals, calls, late replies) is read and dropped at once: by the caller during a call, by the IdleReader between
// the calls. So no traffic, of whatever kind or amount, stands before a reply.
//
// Any thread may call. Calls take turns.
class CallChannel final : private IdleReader::Source {
public:
    // The connection must outlive the channel, and nobody else may read from it. Throws ErrorConnectingToDBUS when the
    // system has no thread or descriptor left for the reading between the calls.
    explicit CallChannel(DBusConnection& connection);
    CallChannel(const CallChannel&) = delete;
    CallChannel& operator=(const CallChannel&) = delete;
    ~CallChannel() = default;

    // Sends the call and waits for its reply. Without one, or when it is an error, it returns null, and `error` tells
    // what the remote side, the bus or the library said, which is DBUS_ERROR_TIMEOUT when there was no reply in time;
    // `error` stays unset when there is no memory for sending.
    // `timeout` counts from the beginning of this call, on the steady clock.
    DBUSMessageHandle call(DBusMessage& call, std::chrono::milliseconds timeout, DBUSError& error);

private:
    using Clock = std::chrono::steady_clock;

    class Turn;

    void readIdle() override;
    std::unique_lock<std::mutex> lockBetweenCalls();
    void dropBacklog();
    DBUSMessageHandle waitForReply(dbus_uint32_t serial, Clock::time_point deadline, DBUSError& error);
    DBUSMessageHandle takeReply(dbus_uint32_t serial);
    void dropReceived();
    bool waitForTraffic(std::chrono::milliseconds bound) const;
    bool isOpen() const;
    void transfer();

    DBusConnection& m_connection;
    const int m_fd;
    std::atomic<int> m_callers{0};   // the calls that wait for m_mutex or hold it
    std::mutex m_mutex;              // held by whoever uses m_connection
    IdleReader::Registration m_idle; // last: the reader thread uses the members above
};

} // namespace DAX::Common::DBUSWrapper
