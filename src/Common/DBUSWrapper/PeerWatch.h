#pragma once

#include <chrono>
#include <memory>
#include <string>

#include "Common/DBUSWrapper/ClientConnection.h"

struct DBusConnection;
struct DBusMessage;

namespace DAX::Common::DBUSWrapper {

class CallChannel;

// Follows the peer that has a well-known name by its unique name, which the bus never gives to anybody else. It has a
// connection of its own, which is read as that of an IDBUSProxy is. One thread at a time.
//
// Each question to the bus waits for the connection's time-out at most. follow() asks up to twelve, as a peer may leave
// right after its start, and throws at the first that is not answered in time.
class PeerWatch {
public:
    // Throws ErrorConnectingToDBUS when there is no bus, and when the system has no thread or descriptor left.
    PeerWatch(const ClientConnection& connection, std::string name);
    PeerWatch(const PeerWatch&) = delete;
    PeerWatch& operator=(const PeerWatch&) = delete;
    ~PeerWatch();

    // Has the bus start the peer if nobody has the name, and from then on follows the one that has it. Returns its
    // unique name. Throws RemoteObjectActivationTimedOut and RemoteObjectNotAccessible, as a call to the peer would.
    std::string follow();

    // True as soon as the followed peer has left the bus, or the bus is gone. Does not wait, except when others have
    // sent to the connection, which may have displaced the news: then it asks the bus, for a second at the most.
    bool hasGone();

    // The same, but asks the bus, since its signal may still be on the way. False when the bus does not answer.
    bool askWhetherItHasGone();

    // The same as far as the bus's signal has been read already. Neither reads nor waits.
    bool isKnownToHaveGone() const;

    // Asks the bus whether anybody has the well-known name. Starts and follows nobody. Throws as follow().
    bool askWhetherAnybodyHasTheName();

    // Asks the bus whether the followed peer has the well-known name. This differs from hasGone(): between two peers
    // nobody has the name, and a peer that has given it back is still on the bus.
    bool askWhetherItHasTheName();

private:
    // What the bus has told, and who else has sent. Any thread.
    class News;

    std::string ask(DBusMessage& question) { return ask(question, m_timeout); }
    std::string ask(DBusMessage& question, std::chrono::milliseconds timeout);
    std::string ownerOfTheName();
    bool hasOwner(const std::string& name, std::chrono::milliseconds timeout);
    bool askWhetherItHasGone(std::chrono::milliseconds timeout);

    const std::chrono::milliseconds m_timeout;
    const std::string m_name;
    const std::unique_ptr<News> m_news;
    const std::shared_ptr<DBusConnection> m_connection;
    std::string m_uniqueName;
    const std::unique_ptr<CallChannel> m_channel; // last: it uses the members above
};

} // namespace DAX::Common::DBUSWrapper
