#pragma once

#include <map>
#include <string>
#include <vector>

#include <sys/types.h>

namespace DAX::Tests {

// What a system bus allows and how much of it: the distribution's own rules, and the bus daemon's own limits.
struct SystemBusRules {
    // Files such as packages bring for the system bus; their rules follow the distribution's in this order. Whoever
    // runs the tests stands for root: a rule for the user "root" is one for that user. A rule for the group "dax",
    // which this machine may not have, is one for DAX_GROUP.
    std::vector<std::string> policies;
    static constexpr char DAX_GROUP[] = "daemon";

    // The limits that differ, by the name that the bus daemon has for them: {"max_completed_connections", 5000}.
    std::map<std::string, unsigned int> limits;

    // With the daemon's packaged policy, and one for the core that lets root alone own and call it.
    static SystemBusRules ofDevice(std::map<std::string, unsigned int> limits = {});
};

// A message bus of the test's own: a dbus-daemon on a socket in a temporary folder. By default everything is allowed
// and the limits are raised; with rules it is as strict as a system bus, and every user of the machine can connect to
// it. The constructor returns when the bus can be connected to; the destructor ends the daemon and waits for it. The
// daemon ends as well when the thread that made it dies.
//
// libdbus reads the bus addresses once per process. So the folder is made once per process, all system buses that one
// process makes one after the other have the same address, and so have all session buses. Both
// DBUS_SYSTEM_BUS_ADDRESS and DBUS_SESSION_BUS_ADDRESS are set before the first daemon starts: no test reaches the
// machine's own buses, and activated services inherit the addresses, as they inherit the rest of the environment that
// the process has when the bus is made.
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

    // Makes `busName` activatable by the command `execLine`, from now on. Replaces an earlier command.
    void addService(const std::string& busName, const std::string& execLine);

    // Ends the daemon now: every connection breaks.
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
