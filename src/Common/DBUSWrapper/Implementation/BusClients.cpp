#include "Common/DBUSWrapper/Implementation/BusClients.h"

#include <utility>

#include "Common/Logging/LoggingStream.h"

namespace DAX::Common::DBUSWrapper {

namespace {

const char CLIENT_RULE[] = "sender=org.freedesktop.DBus,path=/org/freedesktop/DBus,"
                           "interface=org.freedesktop.DBus,member=NameOwnerChanged,type=signal,arg0=";
const char VANISHING_NAMES_RULE[] = "sender=org.freedesktop.DBus,path=/org/freedesktop/DBus,"
                                    "interface=org.freedesktop.DBus,member=NameOwnerChanged,type=signal,arg2=''";

std::string ruleFor(const std::string& client) {
    return CLIENT_RULE + client;
}

std::string errorOf(DBusMessage& answer) {
    DBUSError error;
    dbus_set_error_from_message(error.get(), &answer);
    return error.isSet() ? error.message() : "";
}

bool isError(DBusMessage& answer) {
    return dbus_message_get_type(&answer) == DBUS_MESSAGE_TYPE_ERROR;
}

} // namespace

BusClients::BusClients(BusCalls& calls, Utils::ISimpleClock& clock, std::function<void(const std::string& name)> onGone)
    : m_calls(calls), m_clock(clock), m_onGone(std::move(onGone)) {}

void BusClients::begin(DBusConnection* connection) {
    m_connection = connection;
    m_isRefusalLogged = false;
    if (!m_clients.empty()) {
        m_clients.clear();
        m_idleSince = m_clock.getCurrentTime();
    }
    addRule(VANISHING_NAMES_RULE, "vanishing names");
}

float BusClients::emptyFor() const {
    return m_clock.getCurrentTime() - m_idleSince;
}

bool BusClients::add(const char* name) {
    if (contains(name)) {
        DAX_LOG(NONE) << "Name " << name << " is already registered in clients list.";
        return false;
    }
    DAX_LOG(INF) << "Registering new connection named " << name;
    m_clients.emplace(name, Client());
    return true;
}

void BusClients::unregisterConnection(const std::string& name) {
    const auto found = m_clients.find(name);
    if (found == m_clients.end()) {
        DAX_LOG(INF) << "Name " << name << " does not exist in clients list.";
        return;
    }
    DAX_LOG(INF) << "Unregistering connection named " << name;
    m_clients.erase(found);
    unsubscribeForNameOwnerChangedSignal(name);
    if (m_clients.empty()) {
        DAX_LOG(INF) << "We are now entering idle state.";
        m_idleSince = m_clock.getCurrentTime();
    }
}

// The bus handles our calls in order: first the rule, then the question. A client may have left before the question:
// then the answer says so. It may leave later: then the rule is in force, and the bus tells us.
void BusClients::subscribeForNameOwnerChangedSignal(const std::string& name) {
    if (!name.empty()) {
        addRule(ruleFor(name), "client " + name);
        askForOwner(name);
    }
}

void BusClients::unsubscribeForNameOwnerChangedSignal(const std::string& name) {
    if (!name.empty()) {
        dbus_bus_remove_match(m_connection, ruleFor(name).c_str(), nullptr);
    }
}

void BusClients::dropQuestion(std::string_view name) {
    const auto found = m_clients.find(name);
    if (found != m_clients.end()) {
        found->second.isQuestionOpen = false;
    }
}

// One line is enough: once there are too many rules, the bus refuses every further one.
void BusClients::addRule(const std::string& rule, const std::string& purpose) {
    m_calls.send(m_connection, BusCalls::make("AddMatch", rule), [this, purpose](DBusMessage& answer) {
        if (isError(answer) && !m_isRefusalLogged) {
            m_isRefusalLogged = true;
            DAX_LOG(WRN) << "The bus refuses the match rule for " << purpose << ": " << errorOf(answer)
                         << ". Further refusals are not logged.";
        }
    });
}

void BusClients::askForOwner(const std::string& name) {
    m_calls.send(m_connection, BusCalls::make("NameHasOwner", name),
                 [this, name](DBusMessage& answer) { receiveOwner(name, answer); });
    m_clients[name].isQuestionOpen = true;
}

void BusClients::receiveOwner(const std::string& name, DBusMessage& answer) {
    const auto found = m_clients.find(name);
    if (found == m_clients.end() || !std::exchange(found->second.isQuestionOpen, false)) {
        return;
    }
    DBUSError error;
    dbus_bool_t hasOwner = true;
    if (isError(answer) ||
        !dbus_message_get_args(&answer, error.get(), DBUS_TYPE_BOOLEAN, &hasOwner, DBUS_TYPE_INVALID)) {
        DAX_LOG(WRN) << "The bus does not tell whether client " << name << " is still there: " << errorOf(answer);
        return;
    }
    if (!hasOwner) {
        m_onGone(name);
    }
}

} // namespace DAX::Common::DBUSWrapper
