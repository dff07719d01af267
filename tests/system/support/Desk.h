#pragma once

#include <memory>
#include <string>
#include <vector>

#include <nlohmann/json_fwd.hpp>

#include "ServiceInterface/IServiceManager.h"
#include "support/PrivateBus.h"
#include "support/Process.h"
#include "support/RawPeer.h"
#include "support/TemporaryRoot.h"

namespace DAX::Tests {

// A tester's desk: a device's root, a bus of its own, and on it the daemon and the simulated core, which the bus starts
// at their first call. Both log to files under the root. The destructor ends every process of the desk.
class Desk {
public:
    // `daemonOptions` follow the daemon's name in its activation file.
    explicit Desk(const std::string& daemonOptions = "");

    // A desk whose bus has the rules of a device.
    Desk(const std::string& daemonOptions, const SystemBusRules& rules);
    ~Desk();
    Desk(const Desk&) = delete;
    Desk& operator=(const Desk&) = delete;

    // Sets the scenario that the simulated core plays from its next transaction on, as the text of a scenario file.
    void play(const std::string& scenario) const;

    // Runs a tool of the build ("daxctl", "kovanctl") to its end, or starts one and leaves it running.
    FinishedRun run(const std::string& tool, const std::vector<std::string>& arguments) const;
    // The same as the user nobody, who may enter the desk's folders. Only the superuser can do this.
    FinishedRun runAsNobody(const std::string& tool, const std::vector<std::string>& arguments) const;
    std::unique_ptr<Process> start(const std::string& tool, const std::vector<std::string>& arguments) const;

    // The same by a shell, which gets the arguments as they are and may redirect the tool's output.
    std::unique_ptr<Process> startByShell(const std::string& tool, const std::string& arguments) const;

    // Starts the daemon by hand instead of by the bus.
    std::unique_ptr<Process> startDaemon(const std::vector<std::string>& options = {},
                                         const std::vector<int>& ignoredSignals = {}) const;

    // Connects this process to the daemon by the client library.
    std::unique_ptr<Service::IServiceManager> connect() const;

    // The process that has the name now, which may be a unique name; 0 when none has it.
    pid_t ownerOf(const std::string& name);
    pid_t daemon() { return ownerOf(DAEMON_NAME); }
    pid_t core() { return ownerOf(CORE_NAME); }
    bool waitForDaemon() { return m_observer.waitForNameOwner(DAEMON_NAME, true); }
    bool waitForNoDaemon() { return m_observer.waitForNameOwner(DAEMON_NAME, false); }
    bool waitForNoCore() { return m_observer.waitForNameOwner(CORE_NAME, false); }

    // The unique name of the daemon's connection; empty when there is none.
    std::string uniqueNameOfDaemon();

    // Ends a process of the desk with a signal and waits until its name is free.
    void killDaemon();
    void killCore();

    // The daemon's whole log; its messages, which are the texts after "file:line>"; and whether a message comes within
    // the usual bound.
    std::string daemonLog() const { return root.read(DAEMON_LOG); }
    std::vector<std::string> daemonMessages() const;
    bool waitForMessage(const std::string& part) const;
    int countMessages(const std::string& part) const;

    // The unique names of a process's connections that have no other name, oldest first.
    std::vector<std::string> namelessConnectionsOf(pid_t pid);

    // Ends the bus, which breaks every connection.
    void stopBus() { m_bus.stop(); }

    // The calls that the simulated core got, oldest first; and only the names of their methods.
    std::vector<nlohmann::json> coreCalls() const;
    std::vector<std::string> coreMethods() const;
    bool waitForCoreCall(const std::string& method, int count = 1) const;

    // The value of a settings key, as kovanctl prints it; "absent" when there is none.
    std::string setting(const std::string& key) const;

    TemporaryRoot root;

private:
    static const char* const DAEMON_NAME;
    static const char* const CORE_NAME;
    static const char* const DAEMON_LOG;

    // Sets up what is the same on every bus.
    void setUp(const std::string& daemonOptions);

    RawMessage askBus(const char* method, const std::string& argument = "");
    void killOwner(const std::string& name);

    PrivateBus m_bus;
    RawPeer m_observer;
};

// True when the process has ended, even if its parent has not noticed yet.
bool hasEnded(pid_t pid);

} // namespace DAX::Tests
