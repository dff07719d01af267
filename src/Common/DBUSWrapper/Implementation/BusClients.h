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

    // A new connection has no clients. It gets one rule for all of them, every name of the bus that vanishes, before
    // the first one comes: a connection has only so many rules, and the later ones are refused. Until the next call of
    // this, the connection is open whenever a function below uses it.
    void begin(DBusConnection* connection);

    bool isEmpty() const { return m_clients.empty(); }
    bool contains(std::string_view name) const { return m_clients.find(name) != m_clients.end(); }

    // In seconds, while there is no client: the time since the last one went, or since the clock was made.
    float emptyFor() const;

    // False when the connection is a client already.
    bool add(const char* name);

    // The client's own rule, and behind it the question whether its name is still there. A message of a broken bus has
    // no sender: a client without a name cannot be watched and stays.
    void subscribeForNameOwnerChangedSignal(const std::string& name);

    // The client's end is known: the answer to the question about it no longer matters.
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
    std::map<std::string, Client, std::less<>> m_clients; // found by the sender of a message without a copy of it
    float m_idleSince = 0;
    bool m_isRefusalLogged = false;
};

} // namespace DAX::Common::DBUSWrapper
