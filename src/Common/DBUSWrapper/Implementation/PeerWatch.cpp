#include "Common/DBUSWrapper/PeerWatch.h"

#include <algorithm>
#include <cstring>
#include <mutex>
#include <utility>

#include <boost/exception/get_error_info.hpp>
#include <dbus/dbus.h>

#include "Common/DBUSWrapper/DBUSWrapperExceptions.h"
#include "Common/DBUSWrapper/Implementation/CallChannel.h"
#include "Common/DBUSWrapper/Implementation/ClientBus.h"
#include "Common/DBUSWrapper/Implementation/DBUSResources.h"
#include "Utility/Utils/ErrInfoStream.h"

namespace DAX::Common::DBUSWrapper {

using namespace DBUSWrapperExceptions;

namespace {

// How often the owner of the name is asked for.
const int OWNER_ATTEMPTS = 6;

// How long hasGone() waits for the bus when it has to ask.
const auto SHORTLY = std::chrono::seconds(1);

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

[[noreturn]] void throwFailureOf(const DBUSError& error) {
    const errinfo_bus_error name(error.name());
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

class PeerWatch::News {
public:
    void follow(const std::string& uniqueName) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_uniqueName = uniqueName;
        m_hasGone = false;
    }

    void take(DBusMessage& message) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (!dbus_message_has_sender(&message, DBUS_SERVICE_DBUS)) {
            m_mayBeIncomplete = true;
        } else if (tellsOfTheEnd(message)) {
            m_hasGone = true;
        }
    }

    bool hasGone() const {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_hasGone;
    }

    void setGone() {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_hasGone = true;
    }

    // Whether the bus may have dropped what it had to tell: it does so for a connection that others have filled.
    bool mayBeIncomplete() const {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_mayBeIncomplete;
    }

    void setIncomplete(bool may) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_mayBeIncomplete = may;
    }

private:
    // Anybody may send a signal of that name, but only the bus can be its sender.
    bool tellsOfTheEnd(DBusMessage& message) const {
        const char* name = nullptr;
        const char* before = nullptr;
        const char* after = nullptr;
        return dbus_message_is_signal(&message, DBUS_INTERFACE_DBUS, "NameOwnerChanged") &&
               dbus_message_get_args(&message, nullptr, DBUS_TYPE_STRING, &name, DBUS_TYPE_STRING, &before,
                                     DBUS_TYPE_STRING, &after, DBUS_TYPE_INVALID) &&
               name == m_uniqueName && std::strlen(after) == 0;
    }

    mutable std::mutex m_mutex; // guards all below
    std::string m_uniqueName;
    bool m_hasGone = false;
    bool m_mayBeIncomplete = false;
};

PeerWatch::PeerWatch(const ClientConnection& connection, std::string name)
    : m_timeout(connection.timeoutMs)
    , m_name(std::move(name))
    , m_news(std::make_unique<News>())
    , m_connection(openClientConnection(connection))
    , m_channel(std::make_unique<CallChannel>(*m_connection, [this](DBusMessage& message) { m_news->take(message); })) {
}

PeerWatch::~PeerWatch() = default;

std::string PeerWatch::follow() {
    m_uniqueName = ownerOfTheName();
    m_news->follow(m_uniqueName);
    ask(*questionWith("AddMatch", std::string("type='signal',sender='") + DBUS_SERVICE_DBUS + "',interface='" +
                                      DBUS_INTERFACE_DBUS + "',member='NameOwnerChanged',arg0='" + m_uniqueName + "'"));
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
std::string PeerWatch::ask(DBusMessage& question, std::chrono::milliseconds timeout) {
    DBUSError error;
    const DBUSMessageHandle answer = m_channel->call(question, timeout, error);
    if (answer == nullptr && !error.isSet()) {
        DAX_THROW(DBUSMemoryError(), "There is no memory for asking the bus.");
    }
    if (answer == nullptr) {
        throwFailureOf(error);
    }
    const char* text = "";
    dbus_message_get_args(answer.get(), nullptr, DBUS_TYPE_STRING, &text, DBUS_TYPE_INVALID);
    return text;
}

bool PeerWatch::hasGone() {
    m_channel->readBacklog();
    if (isKnownToHaveGone()) {
        return true;
    }
    return m_news->mayBeIncomplete() && askWhetherItHasGone(std::min<std::chrono::milliseconds>(m_timeout, SHORTLY));
}

bool PeerWatch::askWhetherItHasGone() {
    return askWhetherItHasGone(m_timeout);
}

bool PeerWatch::askWhetherItHasGone(std::chrono::milliseconds timeout) {
    m_news->setIncomplete(false); // what comes from now on counts
    try {
        if (!hasOwner(m_uniqueName, timeout)) {
            m_news->setGone();
        }
    } catch (const DBUSWrapperException&) { // the bus does not answer
        m_news->setIncomplete(true);
    }
    return isKnownToHaveGone();
}

bool PeerWatch::isKnownToHaveGone() const {
    return m_news->hasGone() || !m_channel->isOpen();
}

bool PeerWatch::askWhetherAnybodyHasTheName() {
    return hasOwner(m_name, m_timeout);
}

bool PeerWatch::hasOwner(const std::string& name, std::chrono::milliseconds timeout) {
    try {
        return !ask(*questionForTheOwner(name), timeout).empty();
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

} // namespace DAX::Common::DBUSWrapper
