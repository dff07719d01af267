#pragma once

#include <memory>
#include <string>

struct DBusConnection;
struct DBusMessage;

namespace daxctl {

// Follows one daemon by its unique bus name, which the bus gives to nobody else afterwards. For one thread.
class DaemonWatch {
public:
    // Throws ErrorConnectingToDBUS when there is no bus.
    DaemonWatch();
    ~DaemonWatch();
    DaemonWatch(const DaemonWatch&) = delete;
    DaemonWatch& operator=(const DaemonWatch&) = delete;

    // Starts the daemon if none runs, and follows the one that runs then. Gives its unique name. Throws
    // RemoteObjectActivationTimedOut and RemoteObjectNotAccessible, as a call of the daemon would.
    std::string follow();

    // True once the daemon that is followed has left the bus, or the bus is gone. Does not wait.
    bool hasGone();

    // The same, but asks the bus, whose signal may be on its way. False when the bus does not say.
    bool askWhetherItHasGone();

    // Asks the bus. Between two daemons nobody has the name; a daemon that gives it back is still on the bus.
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
