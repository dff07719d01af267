#include "Common/DBUSWrapper/Implementation/CallChannel.h"

#include <algorithm>
#include <limits>
#include <thread>

#include <poll.h>

#include "Common/DBUSWrapper/DBUSWrapperExceptions.h"
#include "Utility/Utils/ErrInfoStream.h"

namespace DAX::Common::DBUSWrapper {

namespace {

// How long a call drops what has come in before it is sent, when more keeps coming.
const auto LONGEST_BACKLOG = std::chrono::milliseconds(100);

// After so many reads of one connection, a few kilobytes each, the reader turns to the next one and lets a call begin.
const int READS_PER_TURN = 64;

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

// While this object lives, the connection belongs to its thread.
class CallChannel::Turn {
public:
    explicit Turn(CallChannel& channel) : m_channel(channel) {
        ++m_channel.m_callers;
        m_channel.m_mutex.lock();
        if (m_channel.isOpen()) {
            m_channel.m_idle.disarm();
        }
    }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;
    ~Turn() {
        --m_channel.m_callers;
        if (m_channel.isOpen()) {
            m_channel.m_idle.arm();
        }
        m_channel.m_mutex.unlock();
    }

private:
    CallChannel& m_channel;
};

CallChannel::CallChannel(DBusConnection& connection)
    : m_connection(connection), m_fd(descriptorOf(connection)), m_idle(m_fd, *this) {
    const Turn first(*this); // its destructor arms the connection
}

DBUSMessageHandle CallChannel::call(DBusMessage& call, std::chrono::milliseconds timeout, DBUSError& error) {
    const auto deadline = Clock::now() + timeout;
    const Turn turn(*this);
    dropBacklog();
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

DBUSMessageHandle CallChannel::waitForReply(dbus_uint32_t serial, Clock::time_point deadline, DBUSError& error) {
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
        if (waitForTraffic(std::chrono::ceil<std::chrono::milliseconds>(deadline - now))) {
            transfer();
        }
    }
}

DBUSMessageHandle CallChannel::takeReply(dbus_uint32_t serial) {
    while (DBUSMessageHandle message{dbus_connection_pop_message(&m_connection)}) {
        if (isReplyTo(*message, serial)) {
            return message;
        }
    }
    return nullptr;
}

// The bus drops a reply for which the connection has no room, so this makes room before the call.
void CallChannel::dropBacklog() {
    const auto end = Clock::now() + LONGEST_BACKLOG;
    dropReceived();
    while (isOpen() && waitForTraffic(std::chrono::milliseconds(0)) && Clock::now() < end) {
        transfer();
        dropReceived();
    }
}

void CallChannel::readIdle() {
    const std::unique_lock<std::mutex> lock = lockBetweenCalls();
    if (!lock) {
        return;
    }
    dropReceived();
    for (int i = 0; i < READS_PER_TURN && m_callers == 0 && isOpen(); ++i) {
        if (!waitForTraffic(std::chrono::milliseconds(0))) {
            break;
        }
        transfer();
        dropReceived();
    }
    if (isOpen()) {
        m_idle.arm();
    }
}

// Returns unlocked when a call is running or waits for its turn; that call arms the connection at its end. When no call
// counts any more, the mutex is about to be released, so waiting for it is short.
std::unique_lock<std::mutex> CallChannel::lockBetweenCalls() {
    std::unique_lock<std::mutex> lock(m_mutex, std::defer_lock);
    while (m_callers == 0 && !lock.try_lock()) {
        std::this_thread::yield();
    }
    return lock;
}

void CallChannel::dropReceived() {
    while (DBUSMessageHandle(dbus_connection_pop_message(&m_connection))) {
    }
}

// Returns false when the bound passes first, or a signal handler interrupts the wait.
bool CallChannel::waitForTraffic(std::chrono::milliseconds bound) const {
    const short writing = dbus_connection_has_messages_to_send(&m_connection) ? POLLOUT : 0;
    pollfd traffic{m_fd, static_cast<short>(POLLIN | writing), 0};
    const auto longest = std::chrono::milliseconds(std::numeric_limits<int>::max());
    return poll(&traffic, 1, static_cast<int>(std::min(bound, longest).count())) > 0;
}

// libdbus closes the descriptor as soon as it notices that the far end has closed the connection.
bool CallChannel::isOpen() const {
    return dbus_connection_get_is_connected(&m_connection) != 0;
}

// Reads and writes what is possible at once, a few kilobytes at the most.
void CallChannel::transfer() {
    dbus_connection_read_write(&m_connection, 0);
}

} // namespace DAX::Common::DBUSWrapper
