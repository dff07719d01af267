#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <dbus/dbus.h>
#include <sys/types.h>

namespace DAX::Tests {

// Peers on the private bus that use libdbus themselves, for messages that the system's own ends never send.

struct RawUnref {
    void operator()(DBusMessage* message) const { dbus_message_unref(message); }
};
using RawMessage = std::unique_ptr<DBusMessage, RawUnref>;

struct RawClose {
    void operator()(DBusConnection* connection) const {
        dbus_connection_close(connection);
        dbus_connection_unref(connection);
    }
};
using RawConnection = std::unique_ptr<DBusConnection, RawClose>;

// Appends one `ay`.
void appendBytes(DBusMessage& message, const std::string& bytes);

// The `ay` arguments of a message, one text for each. Stops at the first argument of another type.
std::vector<std::string> byteArrays(DBusMessage& message);

// A peer that sends and collects messages. One thread at a time. Throws std::runtime_error for what the bus refuses.
class RawPeer {
public:
    static constexpr std::chrono::milliseconds DEFAULT_BOUND{20000};

    explicit RawPeer(DBusBusType type = DBUS_BUS_SYSTEM);

    // A peer of the user "nobody" in these groups. The bus looks at the user that makes the connection, which this
    // process is for as long as that takes; the peer keeps that user's rights. For tests that run as root, on a bus
    // with rules.
    static RawPeer ofNobody(const std::vector<gid_t>& groups = {});

    // Its unique name.
    std::string name() const;

    // The result of RequestName.
    int requestName(const std::string& name, unsigned int flags = DBUS_NAME_FLAG_DO_NOT_QUEUE);

    // Waits until somebody has the name, or nobody has it. False after the bound.
    bool waitForNameOwner(const std::string& name, bool owned, std::chrono::milliseconds bound = DEFAULT_BOUND);

    // Sends the message and writes it out. Returns its serial.
    std::uint32_t send(DBusMessage& message);

    // The reply, which may be an error; empty after the bound. Other messages that arrive are kept.
    RawMessage waitForReply(std::uint32_t serial, std::chrono::milliseconds bound = DEFAULT_BOUND);
    RawMessage call(DBusMessage& message, std::chrono::milliseconds bound = DEFAULT_BOUND);

    // Takes out the kept messages: all that arrived and nobody waited for.
    std::list<RawMessage> takeOthers();

    // How many of the kept messages are replies to the serial.
    int countReplies(std::uint32_t serial) const;

    // Leaves the bus.
    void disconnect();

    DBusConnection* connection() const { return m_connection.get(); }

private:
    RawConnection m_connection;
    std::list<RawMessage> m_others;
};

// A peer with a name that answers on a thread of its own. An empty answer sends no reply to the caller.
class RawServer {
public:
    using Answer = std::function<RawMessage(DBusMessage& call)>;

    RawServer(const std::string& name, Answer answer);
    ~RawServer();

    // The method calls so far.
    std::list<RawMessage> takeCalls();

private:
    void run();

    RawPeer m_peer;
    Answer m_answer;
    std::mutex m_mutex; // guards m_calls
    std::list<RawMessage> m_calls;
    std::atomic<bool> m_stop{false};
    std::thread m_thread;
};

} // namespace DAX::Tests
