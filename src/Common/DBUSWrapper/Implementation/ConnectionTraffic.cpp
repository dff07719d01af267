#include "Common/DBUSWrapper/Implementation/ConnectionTraffic.h"

#include <algorithm>
#include <limits>
#include <utility>

#include <poll.h>

#include "Common/DBUSWrapper/DBUSWrapperExceptions.h"
#include "Utility/Utils/ErrInfoStream.h"

namespace DAX::Common::DBUSWrapper {

namespace {

// How long the backlog is read when more keeps coming.
const auto LONGEST_BACKLOG = std::chrono::milliseconds(100);

// How often the far end is asked to let this process in.
const auto LET_IN_INTERVAL = std::chrono::milliseconds(10);

const char CLOSED[] = "Connection is closed";
const char DISCONNECTED[] = "Connection was disconnected before a reply was received";
const char NO_REPLY[] = "Did not receive a reply. Possible causes include: the remote application did not send a "
                        "reply, the message bus security policy blocked the reply, the reply timeout expired, or the "
                        "network connection was broken.";

// The type counts, too: a signal or a call may carry any reply serial.
bool isReplyTo(DBusMessage& message, dbus_uint32_t serial) {
    const int type = dbus_message_get_type(&message);
    return dbus_message_get_reply_serial(&message) == serial &&
           (type == DBUS_MESSAGE_TYPE_METHOD_RETURN || type == DBUS_MESSAGE_TYPE_ERROR);
}

int descriptorOf(DBusConnection& connection) {
    int fd = -1;
    if (!dbus_connection_get_unix_fd(&connection, &fd)) {
        DAX_THROW(DBUSWrapperExceptions::ErrorConnectingToDBUS(), CLOSED);
    }
    return fd;
}

} // namespace

ConnectionTraffic::ConnectionTraffic(DBusConnection& connection, OnOther onOther)
    : m_connection(connection), m_fd(descriptorOf(connection)), m_onOther(std::move(onOther)) {}

DBUSMessageHandle ConnectionTraffic::call(DBusMessage& call, Clock::time_point deadline, DBUSError& error) {
    readBacklog(); // the bus drops a reply for which the connection has no room
    if (!isOpen()) {
        dbus_set_error_const(error.get(), DBUS_ERROR_DISCONNECTED, CLOSED);
        return nullptr;
    }
    dbus_uint32_t serial = 0;
    if (!dbus_connection_send(&m_connection, &call, &serial)) {
        return nullptr;
    }
    DBUSMessageHandle reply = waitForReply(serial, deadline, error);
    dropReceived(); // what came in with the reply
    if (reply != nullptr && dbus_set_error_from_message(error.get(), reply.get())) {
        return nullptr;
    }
    return reply;
}

DBUSMessageHandle ConnectionTraffic::waitForReply(dbus_uint32_t serial, Clock::time_point deadline, DBUSError& error) {
    for (;;) {
        if (DBUSMessageHandle reply = takeReply(serial)) {
            return reply;
        }
        if (!isOpen()) {
            dbus_set_error_const(error.get(), DBUS_ERROR_DISCONNECTED, DISCONNECTED);
            return nullptr;
        }
        const auto now = Clock::now();
        if (now >= deadline) {
            dbus_set_error_const(error.get(), DBUS_ERROR_TIMEOUT, NO_REPLY);
            return nullptr;
        }
        waitAndTransfer(std::chrono::ceil<std::chrono::milliseconds>(deadline - now));
    }
}

DBUSMessageHandle ConnectionTraffic::takeReply(dbus_uint32_t serial) {
    while (DBUSMessageHandle message{dbus_connection_pop_message(&m_connection)}) {
        if (isReplyTo(*message, serial)) {
            return message;
        }
        drop(*message);
    }
    return nullptr;
}

void ConnectionTraffic::readBacklog() {
    const auto end = Clock::now() + LONGEST_BACKLOG;
    while (readSome() && Clock::now() < end) {
    }
}

bool ConnectionTraffic::readSome() {
    dropReceived();
    if (!isOpen() || !waitForTraffic(std::chrono::milliseconds(0))) {
        return false;
    }
    transfer();
    dropReceived();
    return true;
}

void ConnectionTraffic::dropReceived() {
    while (const DBUSMessageHandle message{dbus_connection_pop_message(&m_connection)}) {
        drop(*message);
    }
}

void ConnectionTraffic::drop(DBusMessage& message) const {
    if (m_onOther) {
        m_onOther(message);
    }
}

// Before the far end has let this process in, libdbus has something to write but must not, and does not tell for what
// it waits.
void ConnectionTraffic::waitAndTransfer(std::chrono::milliseconds bound) {
    if (!isLetIn()) {
        waitForTraffic(std::min(bound, LET_IN_INTERVAL));
        transfer();
    } else if (waitForTraffic(bound)) {
        transfer();
    }
}

// Returns false when the bound passes first, or a signal handler interrupts the wait.
bool ConnectionTraffic::waitForTraffic(std::chrono::milliseconds bound) const {
    const short writing = m_isLetIn && dbus_connection_has_messages_to_send(&m_connection) ? POLLOUT : 0;
    pollfd traffic{m_fd, static_cast<short>(POLLIN | writing), 0};
    const auto longest = std::chrono::milliseconds(std::numeric_limits<int>::max());
    return poll(&traffic, 1, static_cast<int>(std::min(bound, longest).count())) > 0;
}

bool ConnectionTraffic::isLetIn() {
    m_isLetIn = m_isLetIn || dbus_connection_get_is_authenticated(&m_connection) != 0;
    return m_isLetIn;
}

// Reads and writes what is possible at once, a few kilobytes at the most.
void ConnectionTraffic::transfer() {
    dbus_connection_read_write(&m_connection, 0);
}

} // namespace DAX::Common::DBUSWrapper
