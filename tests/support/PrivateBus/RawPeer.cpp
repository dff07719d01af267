#include "support/RawPeer.h"

#include <algorithm>
#include <cerrno>
#include <stdexcept>
#include <system_error>
#include <utility>

#include <grp.h>
#include <unistd.h>

#include "support/WaitUntil.h"

namespace DAX::Tests {
namespace {

using Clock = std::chrono::steady_clock;

class Error {
public:
    Error() { dbus_error_init(&m_error); }
    ~Error() { dbus_error_free(&m_error); }
    DBusError* get() { return &m_error; }
    void throwIfSet() const {
        if (dbus_error_is_set(&m_error)) {
            throw std::runtime_error(std::string(m_error.name) + ": " + m_error.message);
        }
    }

private:
    DBusError m_error;
};

// While the object lives, this process has the user and group of nobody, and these groups.
class Nobody {
public:
    explicit Nobody(const std::vector<gid_t>& groups) : m_groups(static_cast<std::size_t>(getgroups(0, nullptr))) {
        m_groups.resize(static_cast<std::size_t>(getgroups(static_cast<int>(m_groups.size()), m_groups.data())));
        if (setgroups(groups.size(), groups.data()) != 0 || setegid(NOBODY) != 0 || seteuid(NOBODY) != 0) {
            throw std::system_error(errno, std::generic_category(), "cannot become nobody");
        }
    }
    ~Nobody() {
        if (seteuid(0) != 0 || setegid(getgid()) != 0 || setgroups(m_groups.size(), m_groups.data()) != 0) {
            _exit(255);
        }
    }
    Nobody(const Nobody&) = delete;
    Nobody& operator=(const Nobody&) = delete;

private:
    static constexpr uid_t NOBODY = 65534;

    std::vector<gid_t> m_groups; // before
};

int millisecondsUntil(Clock::time_point deadline) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
    return static_cast<int>(std::max<std::int64_t>(left, 0));
}

} // namespace

void appendBytes(DBusMessage& message, const std::string& bytes) {
    const char* data = bytes.data();
    dbus_message_append_args(&message, DBUS_TYPE_ARRAY, DBUS_TYPE_BYTE, &data, static_cast<int>(bytes.size()),
                             DBUS_TYPE_INVALID);
}

std::vector<std::string> byteArrays(DBusMessage& message) {
    std::vector<std::string> result;
    DBusMessageIter argument;
    dbus_message_iter_init(&message, &argument);
    while (dbus_message_iter_get_arg_type(&argument) == DBUS_TYPE_ARRAY &&
           dbus_message_iter_get_element_type(&argument) == DBUS_TYPE_BYTE) {
        DBusMessageIter array;
        dbus_message_iter_recurse(&argument, &array);
        const char* bytes = nullptr;
        int count = 0;
        dbus_message_iter_get_fixed_array(&array, &bytes, &count);
        result.emplace_back(bytes, static_cast<std::size_t>(count));
        dbus_message_iter_next(&argument);
    }
    return result;
}

RawPeer::RawPeer(DBusBusType type) {
    Error error;
    m_connection.reset(dbus_bus_get_private(type, error.get()));
    error.throwIfSet();
    dbus_connection_set_exit_on_disconnect(m_connection.get(), false);
}

// libdbus reads the bus addresses at the first connection of a process. When the process then has the rights of another
// user, it ignores the environment and would find the machine's own bus. Therefore the first connection is an ordinary
// one.
RawPeer RawPeer::ofNobody(const std::vector<gid_t>& groups) {
    const RawPeer addressesAreKnown;
    const Nobody nobody(groups);
    return RawPeer();
}

std::string RawPeer::name() const {
    return dbus_bus_get_unique_name(m_connection.get());
}

int RawPeer::requestName(const std::string& name, unsigned int flags) {
    Error error;
    const int result = dbus_bus_request_name(m_connection.get(), name.c_str(), flags, error.get());
    error.throwIfSet();
    return result;
}

bool RawPeer::waitForNameOwner(const std::string& name, bool owned, std::chrono::milliseconds bound) {
    return waitUntil([&] { return (dbus_bus_name_has_owner(m_connection.get(), name.c_str(), nullptr) != 0) == owned; },
                     bound);
}

std::uint32_t RawPeer::send(DBusMessage& message) {
    dbus_uint32_t serial = 0;
    dbus_connection_send(m_connection.get(), &message, &serial);
    dbus_connection_flush(m_connection.get());
    return serial;
}

RawMessage RawPeer::waitForReply(std::uint32_t serial, std::chrono::milliseconds bound) {
    const auto deadline = Clock::now() + bound;
    do {
        while (RawMessage message{dbus_connection_pop_message(m_connection.get())}) {
            if (dbus_message_get_reply_serial(message.get()) == serial) {
                return message;
            }
            m_others.push_back(std::move(message));
        }
    } while (millisecondsUntil(deadline) > 0 &&
             dbus_connection_read_write(m_connection.get(), millisecondsUntil(deadline)));
    return nullptr;
}

RawMessage RawPeer::call(DBusMessage& message, std::chrono::milliseconds bound) {
    return waitForReply(send(message), bound);
}

std::list<RawMessage> RawPeer::takeOthers() {
    return std::exchange(m_others, {});
}

int RawPeer::countReplies(std::uint32_t serial) const {
    return static_cast<int>(std::count_if(m_others.begin(), m_others.end(), [serial](const RawMessage& message) {
        return dbus_message_get_reply_serial(message.get()) == serial;
    }));
}

void RawPeer::disconnect() {
    m_connection.reset();
}

RawServer::RawServer(const std::string& name, Answer answer) : m_answer(std::move(answer)) {
    if (m_peer.requestName(name) != DBUS_REQUEST_NAME_REPLY_PRIMARY_OWNER) {
        throw std::runtime_error("the name is taken: " + name);
    }
    m_thread = std::thread([this] { run(); });
}

RawServer::~RawServer() {
    m_stop = true;
    m_thread.join();
}

std::list<RawMessage> RawServer::takeCalls() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return std::exchange(m_calls, {});
}

void RawServer::run() {
    while (!m_stop && dbus_connection_read_write(m_peer.connection(), 10)) {
        while (RawMessage message{dbus_connection_pop_message(m_peer.connection())}) {
            if (dbus_message_get_type(message.get()) != DBUS_MESSAGE_TYPE_METHOD_CALL) {
                continue;
            }
            const RawMessage reply = m_answer(*message);
            {
                const std::lock_guard<std::mutex> lock(m_mutex);
                m_calls.push_back(std::move(message));
            }
            if (reply) {
                m_peer.send(*reply);
            }
        }
    }
}

} // namespace DAX::Tests
