#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>

#include <dbus/dbus.h>

#include "Common/DBUSWrapper/Implementation/BusCalls.h"
#include "Common/Utils/ISimpleClock.h"

namespace DAX::Common::DBUSWrapper {

// The clients of an adapter's object: the connections that have called it, by their unique names, with the match rules
// that make the bus tell of their ends, and the time since which there has been none. Only for the adapter's loop.
class BusClients {
public:
    // `onGone` gets the name of a client that had left the bus before the bus could be made to tell of it. It is called
    // from BusCalls::receive, at most once for a client. `calls` and `clock` outlive this object.
    BusClients(BusCalls& calls, Utils::ISimpleClock& clock, std::function<void(const std::string& name)> onGone);

    // Starts anew on this connection, without clients. Adds one rule for every name that vanishes. The bus limits the
    // rules of a connection: when it refuses a later client's own rule, that general rule still tells of the client's
    // end. The connection must be open at each call of a function below, until the next begin().
    void begin(DBusConnection* connection);

    bool isEmpty() const { return m_clients.empty(); }
    bool contains(std::string_view name) const { return m_clients.find(name) != m_clients.end(); }

    // In seconds, while there is no client: the time since the last one went, or since the clock was made.
    float emptyFor() const;

    // False when the connection is a client already.
    bool add(const char* name);

    // Has the bus tell of this client's end: adds a rule for its name, and then asks whether the name is still there.
    // Does nothing for an empty name, which only a faulty bus gives to a sender: that client cannot be watched, so it
    // stays.
    void subscribeForNameOwnerChangedSignal(const std::string& name);

    // Ignores the bus's answer to the question about this client, because its end is known already.
    void dropQuestion(std::string_view name);

    void unregisterConnection(const std::string& name);

private:
    struct Client {
        bool isQuestionOpen = false;
    };

    void unsubscribeForNameOwnerChangedSignal(const std::string& name);
    void addRule(const std::string& rule, const std::string& purpose);
    void askForOwner(const std::string& name);
    void receiveOwner(const std::string& name, DBusMessage& answer);

    BusCalls& m_calls;
    Utils::ISimpleClock& m_clock;
    std::function<void(const std::string& name)> m_onGone;
    DBusConnection* m_connection = nullptr;
    std::map<std::string, Client, std::less<>> m_clients; // std::less<>: looked up without a copy of the name
    float m_idleSince = 0;
    bool m_isRefusalLogged = false;
};

} // namespace DAX::Common::DBUSWrapper
