#pragma once

#include <atomic>
#include <chrono>
#include <mutex>

#include <dbus/dbus.h>

#include "Common/DBUSWrapper/Implementation/ConnectionTraffic.h"
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
    // The connection must outlive the channel, and nobody else may read from it. `onOther` gets what is dropped, on the
    // thread that reads it, and one message at a time. Throws ErrorConnectingToDBUS when the system has no thread or
    // descriptor left for the reading between the calls.
    explicit CallChannel(DBusConnection& connection, ConnectionTraffic::OnOther onOther = nullptr);
    CallChannel(const CallChannel&) = delete;
    CallChannel& operator=(const CallChannel&) = delete;
    ~CallChannel() = default;

    // Sends the call and waits for its reply. Without one, or when it is an error, it returns null, and `error` tells
    // what the remote side, the bus or the library said, which is DBUS_ERROR_TIMEOUT when there was no reply in time;
    // `error` stays unset when there is no memory for sending.
    // `timeout` counts from the beginning of this call, on the steady clock.
    DBUSMessageHandle call(DBusMessage& call, std::chrono::milliseconds timeout, DBUSError& error);

    // Reads what has come in, but not for long when more keeps coming.
    void readBacklog();

    bool isOpen() const { return m_traffic.isOpen(); }

private:
    class Turn;

    void readIdle() override;
    std::unique_lock<std::mutex> lockBetweenCalls();

    std::atomic<int> m_callers{0}; // the calls that wait for m_mutex or hold it
    std::mutex m_mutex;            // held by whoever uses m_traffic
    ConnectionTraffic m_traffic;
    IdleReader::Registration m_idle; // last: the reader thread uses the members above
};

} // namespace DAX::Common::DBUSWrapper
