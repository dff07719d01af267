#include "daxctl/DaemonWatch.h"

#include <cstring>

#include <dbus/dbus.h>

#include "Common/DBUSWrapper/DBUSWrapperExceptions.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/DBUSDefines.h"
#include "Utility/Utils/ErrInfoStream.h"

namespace daxctl {

namespace {

using namespace DAX::Common::DBUSWrapper::DBUSWrapperExceptions;

const char* const DAEMON = DAX::DAXIPC::DBUSLowLevel::DBUSNames::DBUSService::DBUSIServiceManager::CONNECTION_NAME;

// The same time as for a call to the daemon.
const int LONGEST_ANSWER_MS = 60000;

// How often the owner of the name is asked for.
const int OWNER_ATTEMPTS = 6;

// At most so many messages at a time, since others may send to this connection as well. The rest waits for the next
// look.
const int MESSAGES_PER_LOOK = 1000;

class Error {
public:
    Error() { dbus_error_init(&m_error); }
    Error(const Error&) = delete;
    Error& operator=(const Error&) = delete;
    ~Error() { dbus_error_free(&m_error); }

    DBusError* get() { return &m_error; }
    bool isSet() const { return dbus_error_is_set(&m_error) != 0; }
    bool hasName(const char* name) const { return dbus_error_has_name(&m_error, name) != 0; }
    std::string message() const { return m_error.message; }

private:
    DBusError m_error;
};

struct Unref {
    void operator()(DBusMessage* message) const { dbus_message_unref(message); }
};
using Message = std::unique_ptr<DBusMessage, Unref>;

Message question(const char* method) {
    Message message(dbus_message_new_method_call(DBUS_SERVICE_DBUS, DBUS_PATH_DBUS, DBUS_INTERFACE_DBUS, method));
    if (message == nullptr) {
        DAX_THROW(DBUSMemoryError(), "A message cannot be made.");
    }
    return message;
}

[[noreturn]] void throwFailureOf(const Error& error) {
    if (error.hasName(DBUS_ERROR_TIMED_OUT)) {
        DAX_THROW(RemoteObjectActivationTimedOut(), error.message());
    }
    DAX_THROW(RemoteObjectNotAccessible(), error.message());
}

} // namespace

void DaemonWatch::Close::operator()(DBusConnection* connection) const {
    dbus_connection_close(connection);
    dbus_connection_unref(connection);
}

DaemonWatch::DaemonWatch() {
    Error error;
    m_connection.reset(dbus_bus_get_private(DBUS_BUS_SYSTEM, error.get()));
    if (m_connection == nullptr) {
        DAX_THROW(ErrorConnectingToDBUS(), error.message());
    }
    dbus_connection_set_exit_on_disconnect(m_connection.get(), 0);
}

DaemonWatch::~DaemonWatch() = default;

std::string DaemonWatch::follow() {
    m_uniqueName = ownerOfTheName();
    Error error;
    const std::string rule = std::string("type='signal',sender='") + DBUS_SERVICE_DBUS + "',interface='" +
                             DBUS_INTERFACE_DBUS + "',member='NameOwnerChanged',arg0='" + m_uniqueName + "'";
    dbus_bus_add_match(m_connection.get(), rule.c_str(), error.get());
    if (error.isSet()) {
        throwFailureOf(error);
    }
    m_hasGone = false;
    return m_uniqueName;
}

// The daemon may leave between its start and the question, so both are repeated. The question comes first: a daemon
// that was started by hand needs no activation file.
std::string DaemonWatch::ownerOfTheName() {
    for (int attempt = 1;; ++attempt) {
        const Message owner = question("GetNameOwner");
        dbus_message_append_args(owner.get(), DBUS_TYPE_STRING, &DAEMON, DBUS_TYPE_INVALID);
        try {
            return ask(*owner);
        } catch (const RemoteObjectNotAccessible&) {
            if (attempt == OWNER_ATTEMPTS) {
                throw;
            }
        }
        const dbus_uint32_t flags = 0;
        const Message start = question("StartServiceByName");
        dbus_message_append_args(start.get(), DBUS_TYPE_STRING, &DAEMON, DBUS_TYPE_UINT32, &flags, DBUS_TYPE_INVALID);
        ask(*start);
    }
}

// The text in the answer; empty when there is none.
std::string DaemonWatch::ask(DBusMessage& question) {
    Error error;
    const Message answer(
        dbus_connection_send_with_reply_and_block(m_connection.get(), &question, LONGEST_ANSWER_MS, error.get()));
    if (answer == nullptr) {
        throwFailureOf(error);
    }
    const char* text = "";
    dbus_message_get_args(answer.get(), nullptr, DBUS_TYPE_STRING, &text, DBUS_TYPE_INVALID);
    return text;
}

bool DaemonWatch::hasGone() {
    for (int i = 0; i < MESSAGES_PER_LOOK && !m_hasGone; ++i) {
        const Message message(dbus_connection_pop_message(m_connection.get()));
        if (message == nullptr) {
            m_hasGone = dbus_connection_read_write(m_connection.get(), 0) == 0;
            if (dbus_connection_get_dispatch_status(m_connection.get()) == DBUS_DISPATCH_COMPLETE) {
                break;
            }
        } else {
            m_hasGone = tellsOfTheEnd(*message);
        }
    }
    return m_hasGone;
}

bool DaemonWatch::askWhetherItHasGone() {
    Error error;
    const bool isThere = dbus_bus_name_has_owner(m_connection.get(), m_uniqueName.c_str(), error.get()) != 0;
    m_hasGone = hasGone() || (!isThere && !error.isSet());
    return m_hasGone;
}

bool DaemonWatch::askWhetherItHasTheName() {
    const Message owner = question("GetNameOwner");
    dbus_message_append_args(owner.get(), DBUS_TYPE_STRING, &DAEMON, DBUS_TYPE_INVALID);
    try {
        return ask(*owner) == m_uniqueName;
    } catch (const RemoteObjectNotAccessible&) {
        return false;
    }
}

// Anybody may send a signal of that name, but only the bus can be its sender.
bool DaemonWatch::tellsOfTheEnd(DBusMessage& message) const {
    const char* name = nullptr;
    const char* before = nullptr;
    const char* after = nullptr;
    return dbus_message_is_signal(&message, DBUS_INTERFACE_DBUS, "NameOwnerChanged") &&
           dbus_message_has_sender(&message, DBUS_SERVICE_DBUS) &&
           dbus_message_get_args(&message, nullptr, DBUS_TYPE_STRING, &name, DBUS_TYPE_STRING, &before,
                                 DBUS_TYPE_STRING, &after, DBUS_TYPE_INVALID) &&
           name == m_uniqueName && std::strlen(after) == 0;
}

} // namespace daxctl
