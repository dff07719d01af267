#include "Common/DBUSWrapper/PeerWatch.h"

#include <cstring>
#include <utility>

#include <boost/exception/get_error_info.hpp>
#include <dbus/dbus.h>

#include "Common/DBUSWrapper/DBUSWrapperExceptions.h"
#include "Common/DBUSWrapper/Implementation/ClientBus.h"
#include "Common/DBUSWrapper/Implementation/DBUSResources.h"
#include "Utility/Utils/ErrInfoStream.h"

namespace DAX::Common::DBUSWrapper {

using namespace DBUSWrapperExceptions;

namespace {

// How often the owner of the name is asked for.
const int OWNER_ATTEMPTS = 6;

// At most so many messages at a time, since others may send to this connection as well. The rest waits for the next
// look.
const int MESSAGES_PER_LOOK = 1000;

DBUSMessageHandle question(const char* method) {
    DBUSMessageHandle message(
        dbus_message_new_method_call(DBUS_SERVICE_DBUS, DBUS_PATH_DBUS, DBUS_INTERFACE_DBUS, method));
    if (message == nullptr) {
        DAX_THROW(DBUSMemoryError(), "A message cannot be made.");
    }
    return message;
}

DBUSMessageHandle questionWith(const char* method, const std::string& argument) {
    DBUSMessageHandle message = question(method);
    const char* const text = argument.c_str();
    dbus_message_append_args(message.get(), DBUS_TYPE_STRING, &text, DBUS_TYPE_INVALID);
    return message;
}

DBUSMessageHandle questionForTheOwner(const std::string& name) {
    return questionWith("GetNameOwner", name);
}

// The bus answers for itself, so that no reply can only mean that it took too long.
[[noreturn]] void throwFailureOf(const DBUSError& error) {
    const errinfo_bus_error name(error.hasName(DBUS_ERROR_NO_REPLY) ? DBUS_ERROR_TIMEOUT : error.name());
    if (error.hasName(DBUS_ERROR_TIMED_OUT)) {
        DAX_THROW(RemoteObjectActivationTimedOut(), error.message() << name);
    }
    DAX_THROW(RemoteObjectNotAccessible(), error.message() << name);
}

bool meansNobody(const RemoteObjectNotAccessible& exception) {
    const std::string* const busError = boost::get_error_info<errinfo_bus_error>(exception);
    return busError != nullptr && *busError == DBUS_ERROR_NAME_HAS_NO_OWNER;
}

} // namespace

PeerWatch::PeerWatch(const ClientConnection& connection, std::string name)
    : m_timeoutMs(timeoutOf(connection)), m_name(std::move(name)), m_connection(openClientConnection(connection)) {}

PeerWatch::~PeerWatch() = default;

std::string PeerWatch::follow() {
    m_uniqueName = ownerOfTheName();
    ask(*questionWith("AddMatch", std::string("type='signal',sender='") + DBUS_SERVICE_DBUS + "',interface='" +
                                      DBUS_INTERFACE_DBUS + "',member='NameOwnerChanged',arg0='" + m_uniqueName + "'"));
    m_hasGone = false;
    return m_uniqueName;
}

// The peer may leave between its start and the question, so both are repeated. The question comes first: a peer that
// was started by hand needs no activation file.
std::string PeerWatch::ownerOfTheName() {
    for (int attempt = 1;; ++attempt) {
        try {
            return ask(*questionForTheOwner(m_name));
        } catch (const RemoteObjectNotAccessible& exception) {
            if (attempt == OWNER_ATTEMPTS || !meansNobody(exception)) {
                throw;
            }
        }
        const char* const name = m_name.c_str();
        const dbus_uint32_t flags = 0;
        const DBUSMessageHandle start = question("StartServiceByName");
        dbus_message_append_args(start.get(), DBUS_TYPE_STRING, &name, DBUS_TYPE_UINT32, &flags, DBUS_TYPE_INVALID);
        ask(*start);
    }
}

// The text in the answer; empty when there is none.
std::string PeerWatch::ask(DBusMessage& question) {
    DBUSError error;
    const DBUSMessageHandle answer(
        dbus_connection_send_with_reply_and_block(m_connection.get(), &question, m_timeoutMs, error.get()));
    if (answer == nullptr) {
        throwFailureOf(error);
    }
    const char* text = "";
    dbus_message_get_args(answer.get(), nullptr, DBUS_TYPE_STRING, &text, DBUS_TYPE_INVALID);
    return text;
}

bool PeerWatch::hasGone() {
    for (int i = 0; i < MESSAGES_PER_LOOK && !m_hasGone; ++i) {
        const DBUSMessageHandle message(dbus_connection_pop_message(m_connection.get()));
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

bool PeerWatch::askWhetherItHasGone() {
    bool isThere = true;
    try {
        isThere = hasOwner(m_uniqueName);
    } catch (const DBUSWrapperException&) { // the bus does not answer
    }
    m_hasGone = hasGone() || !isThere;
    return m_hasGone;
}

bool PeerWatch::askWhetherAnybodyHasTheName() {
    return hasOwner(m_name);
}

bool PeerWatch::hasOwner(const std::string& name) {
    try {
        return !ask(*questionForTheOwner(name)).empty();
    } catch (const RemoteObjectNotAccessible& exception) {
        if (!meansNobody(exception)) {
            throw;
        }
        return false;
    }
}

bool PeerWatch::askWhetherItHasTheName() {
    try {
        return ask(*questionForTheOwner(m_name)) == m_uniqueName;
    } catch (const RemoteObjectNotAccessible&) {
        return false;
    }
}

// Anybody may send a signal of that name, but only the bus can be its sender.
bool PeerWatch::tellsOfTheEnd(DBusMessage& message) const {
    const char* name = nullptr;
    const char* before = nullptr;
    const char* after = nullptr;
    return dbus_message_is_signal(&message, DBUS_INTERFACE_DBUS, "NameOwnerChanged") &&
           dbus_message_has_sender(&message, DBUS_SERVICE_DBUS) &&
           dbus_message_get_args(&message, nullptr, DBUS_TYPE_STRING, &name, DBUS_TYPE_STRING, &before,
                                 DBUS_TYPE_STRING, &after, DBUS_TYPE_INVALID) &&
           name == m_uniqueName && std::strlen(after) == 0;
}

} // namespace DAX::Common::DBUSWrapper
