#pragma once

#include <string>

#include <sys/types.h>

namespace DAX {
namespace Tests {

// A message bus of the test's own: a dbus-daemon on a socket in a temporary folder, with everything allowed and its
// limits raised. The constructor returns when the bus can be connected to; the destructor ends the daemon and waits for
// it. The daemon ends as well when the thread that made it dies.
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
    std::string m_address;
    std::string m_services; // the folder of the activation files
    pid_t m_pid = 0;
};

} // namespace Tests
} // namespace DAX
