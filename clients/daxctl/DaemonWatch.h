#pragma once

#include <memory>
#include <string>

struct DBusConnection;
struct DBusMessage;

namespace daxctl {

// Follows one daemon by its unique bus name, which the bus never gives to anybody else. One thread at a time.
class DaemonWatch {
public:
    // Throws ErrorConnectingToDBUS when there is no bus.
    DaemonWatch();
    ~DaemonWatch();
    DaemonWatch(const DaemonWatch&) = delete;
    DaemonWatch& operator=(const DaemonWatch&) = delete;

    // Starts the daemon if none runs, and from then on follows the one that runs. Returns its unique name. Throws
    // RemoteObjectActivationTimedOut and RemoteObjectNotAccessible, as a call to the daemon would.
    std::string follow();

    // True as soon as the followed daemon has left the bus, or the bus is gone. Does not wait.
    bool hasGone();

    // The same, but asks the bus, since its signal may still be on the way. False when the bus does not answer.
    bool askWhetherItHasGone();

    // Asks the bus whether the followed daemon has the daemon's well-known name. This differs from hasGone(): between
    // two daemons nobody has the name, and a daemon that has given it back is still on the bus.
    bool askWhetherItHasTheName();

private:
    struct Close {
        void operator()(DBusConnection* connection) const;
    };

    std::string ask(DBusMessage& question);
    std::string ownerOfTheName();
    bool tellsOfTheEnd(DBusMessage& message) const;

    std::unique_ptr<DBusConnection, Close> m_connection;
    std::string m_uniqueName;
    bool m_hasGone = false;
};

} // namespace daxctl
