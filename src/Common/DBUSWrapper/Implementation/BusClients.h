#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>

#include <dbus/dbus.h>

#include "Common/DBUSWrapper/Implementation/BusCalls.h"

namespace DAX::Common::DBUSWrapper {

// The connections that have called an adapter's object, by their unique names, and what makes the bus tell of their
// ends. Only for the adapter's loop.
class BusClients {
public:
    // `onGone` gets the name of a client that had left the bus before the bus could be made to tell of it. It is called
    // from BusCalls::receive, at most once for a client.
    BusClients(BusCalls& calls, std::function<void(const std::string& name)> onGone);

    bool isEmpty() const { return m_clients.empty(); }
    bool contains(std::string_view name) const { return m_clients.find(name) != m_clients.end(); }
    void add(const std::string& name);
    void remove(std::string_view name);
    void clear() { m_clients.clear(); }

    // One rule for all: every name of the bus that vanishes. Before the first client, since a connection has only so
    // many rules, and the later ones are refused.
    void watchVanishingNames(DBusConnection* connection);

    // The client's own rule, and behind it the question whether its name is still there.
    void watch(DBusConnection* connection, const std::string& name);
    void unwatch(DBusConnection* connection, const std::string& name);

    // The client's end is known: the answer to the question about it no longer matters.
    void dropQuestion(std::string_view name);

private:
    struct Client {
        bool isQuestionOpen = false;
    };

    void addRule(DBusConnection* connection, const std::string& rule, const std::string& purpose);
    void askForOwner(DBusConnection* connection, const std::string& name);
    void receiveOwner(const std::string& name, DBusMessage& answer);

    BusCalls& m_calls;
    std::function<void(const std::string& name)> m_onGone;
    std::map<std::string, Client, std::less<>> m_clients; // found by the sender of a message without a copy of it
    bool m_isRefusalLogged = false;
};

} // namespace DAX::Common::DBUSWrapper
