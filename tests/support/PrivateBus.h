#pragma once

#include <map>
#include <string>
#include <vector>

#include <sys/types.h>

namespace DAX::Tests {

// What a system bus allows, and how much of it: by default the distribution's own rules and the bus daemon's own
// limits.
struct SystemBusRules {
    // Policy files, such as packages install for the system bus. Their rules follow the distribution's in this order.
    // The user who runs the tests takes the place of root in them, and DAX_GROUP that of the group "dax", which this
    // machine may not have.
    std::vector<std::string> policies;
    static constexpr char DAX_GROUP[] = "daemon";

    // The limits that differ from the default, by the bus daemon's name for them: {"max_completed_connections", 5000}.
    std::map<std::string, unsigned int> limits;

    // With the daemon's packaged policy, and with one for the core that lets only root own and call it.
    static SystemBusRules ofDevice(std::map<std::string, unsigned int> limits = {});
};

// A message bus of the test's own: a dbus-daemon on a socket in a temporary folder. By default everything is allowed
// and the limits are raised. With rules it is as strict as a system bus, and every user of the machine can connect to
// it. When the constructor returns, the bus accepts connections; the destructor ends the daemon and waits for it. The
// daemon also ends when the thread that made it dies.
//
// libdbus reads the bus addresses once per process. Therefore the folder is made once per process, and all system buses
// that a process makes one after the other have the same address, as have all session buses. Both
// DBUS_SYSTEM_BUS_ADDRESS and DBUS_SESSION_BUS_ADDRESS are set before the first daemon starts, so that no test reaches
// the machine's own buses. Activated services inherit the addresses, together with the rest of the environment that the
// process has when the bus is made.
//
// Failures throw std::runtime_error.
class PrivateBus {
public:
    enum class Kind { SYSTEM, SESSION };

    explicit PrivateBus(Kind kind = Kind::SYSTEM, unsigned int serviceStartTimeoutMs = 25000);
    explicit PrivateBus(const SystemBusRules& rules);
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;
    ~PrivateBus();

    // From now on the bus activates `busName` by the command `execLine`, which replaces an earlier one.
    void addService(const std::string& busName, const std::string& execLine);

    // Ends the daemon now, which breaks every connection.
    void stop();

    const std::string& address() const { return m_address; }
    pid_t pid() const { return m_pid; }

private:
    // Starts the daemon of the kind; `rules` are the policies and limits of its configuration.
    void start(Kind kind, const std::string& rules);

    std::string m_address;
    std::string m_services; // the folder of the activation files
    pid_t m_pid = 0;
};

} // namespace DAX::Tests
