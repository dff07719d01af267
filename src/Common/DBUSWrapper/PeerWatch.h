#pragma once

#include <memory>
#include <string>

#include "Common/DBUSWrapper/ClientConnection.h"

struct DBusConnection;
struct DBusMessage;

namespace DAX::Common::DBUSWrapper {

// Follows the peer that has a well-known name by its unique name, which the bus never gives to anybody else. It has a
// connection of its own. One thread at a time.
//
// Each question to the bus waits for the connection's time-out at most. follow() asks up to twelve, as a peer may leave
// right after its start, and throws at the first that is not answered in time.
class PeerWatch {
public:
    // Throws ErrorConnectingToDBUS when there is no bus.
    PeerWatch(const ClientConnection& connection, std::string name);
    PeerWatch(const PeerWatch&) = delete;
    PeerWatch& operator=(const PeerWatch&) = delete;
    ~PeerWatch();

    // Has the bus start the peer if nobody has the name, and from then on follows the one that has it. Returns its
    // unique name. Throws RemoteObjectActivationTimedOut and RemoteObjectNotAccessible, as a call to the peer would.
    std::string follow();

    // True as soon as the followed peer has left the bus, or the bus is gone. Does not wait.
    bool hasGone();

    // The same, but asks the bus, since its signal may still be on the way. False when the bus does not answer.
    bool askWhetherItHasGone();

    // Asks the bus whether anybody has the well-known name. Starts and follows nobody. Throws as follow().
    bool askWhetherAnybodyHasTheName();

    // Asks the bus whether the followed peer has the well-known name. This differs from hasGone(): between two peers
    // nobody has the name, and a peer that has given it back is still on the bus.
    bool askWhetherItHasTheName();

private:
    std::string ask(DBusMessage& question);
    std::string ownerOfTheName();
    bool hasOwner(const std::string& name);
    bool tellsOfTheEnd(DBusMessage& message) const;

    const int m_timeoutMs;
    const std::string m_name;
    const std::shared_ptr<DBusConnection> m_connection;
    std::string m_uniqueName;
    bool m_hasGone = false;
};

} // namespace DAX::Common::DBUSWrapper
