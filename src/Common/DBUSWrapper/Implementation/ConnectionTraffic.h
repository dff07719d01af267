#pragma once

#include <chrono>
#include <functional>

#include <dbus/dbus.h>

#include "Common/DBUSWrapper/Implementation/DBUSResources.h"

namespace DAX::Common::DBUSWrapper {

// Reads and writes one connection, and never waits longer than it is told. libdbus's own waiting has no such bound: not
// until the far end has let this process in, and not while messages keep coming.
//
// The connection must outlive this, and nobody else may read from it. One thread at a time, but for isOpen().
class ConnectionTraffic {
public:
    using Clock = std::chrono::steady_clock;

    // Gets what nobody waits for, before it is dropped. It must neither throw nor use the connection.
    using OnOther = std::function<void(DBusMessage& message)>;

    // Throws ErrorConnectingToDBUS when the connection is closed already.
    explicit ConnectionTraffic(DBusConnection& connection, OnOther onOther = nullptr);

    // Sends the call and waits for its reply. Without one, or when it is an error, it returns null, and `error` tells
    // what the remote side, the bus or the library said, which is DBUS_ERROR_TIMEOUT when there was no reply until the
    // deadline; `error` stays unset when there is no memory for sending. What has come in before is read first.
    DBUSMessageHandle call(DBusMessage& call, Clock::time_point deadline, DBUSError& error);

    // Takes out what has come in, until nothing more comes, but not for long when more keeps coming.
    void readBacklog();

    // Does a part of that, a few kilobytes. False when there is no more.
    bool readSome();

    // libdbus closes the descriptor as soon as it notices that the far end has closed the connection.
    bool isOpen() const { return dbus_connection_get_is_connected(&m_connection) != 0; }

    int descriptor() const { return m_fd; }

private:
    DBUSMessageHandle waitForReply(dbus_uint32_t serial, Clock::time_point deadline, DBUSError& error);
    DBUSMessageHandle takeReply(dbus_uint32_t serial);
    void dropReceived();
    void drop(DBusMessage& message) const;
    void waitAndTransfer(std::chrono::milliseconds bound);
    bool waitForTraffic(std::chrono::milliseconds bound) const;
    bool isLetIn();
    void transfer();

    DBusConnection& m_connection;
    const int m_fd;
    const OnOther m_onOther;
    bool m_isLetIn = false;
};

} // namespace DAX::Common::DBUSWrapper
