#include "system/support/Desk.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include <unistd.h>

#include "Common/DBUSWrapper/IDBUSProxy.h"
#include "DAXIPC/DBUSLowLevel/Proxies/DAXServiceProxy/CServiceManagerProxyFactory.h"
#include "support/WaitUntil.h"

namespace DAX {
namespace Tests {

const char* const Desk::DAEMON_NAME = "org.kovan.tv.dax.service.servicemanager";
const char* const Desk::CORE_NAME = "org.kovan.tv.dax.core.TV";
const char* const Desk::DAEMON_LOG = "daemon.log";

namespace {

const char* const PARTITION = "mnt/systemrw/org.kovan.tv.dax/data/tv";
const char* const CORE_LOG = "core.log";
const char* const SCENARIO = "etc/kovan/core-scenario.ini";
const char* const CORE_CALLS = "var/log/kovan/core-calls.jsonl";

std::string programPath(const std::string& name) {
    return std::string(DAX_PROGRAMS) + "/" + name;
}

std::string execLine(const TemporaryRoot& root, const char* log, const std::string& program) {
    return "/usr/bin/env KOVAN_DLOG=" + (root / log).string() + " " + programPath(program);
}

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

} // namespace

bool hasEnded(pid_t pid) {
    std::ifstream status("/proc/" + std::to_string(pid) + "/stat");
    std::string text;
    return !std::getline(status, text) || text.find(") Z") != std::string::npos;
}

Desk::Desk(const std::string& daemonOptions) {
    setUp(daemonOptions);
}

Desk::Desk(const std::string& daemonOptions, const SystemBusRules& rules) : m_bus(rules) {
    setUp(daemonOptions);
}

void Desk::setUp(const std::string& daemonOptions) {
    setenv("KOVAN_DLOG", "none", 1);                       // of this process; what is on the desk logs to its own files
    std::filesystem::create_directories(root / PARTITION); // which every device has
    m_bus.addService(DAEMON_NAME, execLine(root, DAEMON_LOG, "DAXService " + daemonOptions));
    m_bus.addService(CORE_NAME, execLine(root, CORE_LOG, "DAXCoreSimulator"));
}

Desk::~Desk() {
    const pid_t processes[] = {daemon(), core()};
    m_observer.disconnect();
    m_bus.stop();
    for (const pid_t pid : processes) {
        // A name that the test itself had may still be its own to the bus.
        if (pid != 0 && pid != getpid() && !waitUntil([pid] { return hasEnded(pid); })) {
            ::kill(pid, SIGKILL);
        }
    }
}

void Desk::play(const std::string& scenario) const {
    root.write(SCENARIO, scenario);
}

std::unique_ptr<Process> Desk::start(const std::string& tool, const std::vector<std::string>& arguments) const {
    Command command;
    command.line = arguments;
    command.line.insert(command.line.begin(), programPath(tool));
    command.environment["KOVAN_DLOG"] = "none";
    return std::make_unique<Process>(command);
}

FinishedRun Desk::run(const std::string& tool, const std::vector<std::string>& arguments) const {
    const auto process = start(tool, arguments);
    const auto end = process->waitForEnd(std::chrono::seconds(60));
    return {end.value_or(ProcessEnd()), process->output(), process->errors()};
}

std::unique_ptr<Process> Desk::startDaemon(const std::vector<std::string>& options,
                                           const std::vector<int>& ignoredSignals) const {
    Command command;
    command.line = options;
    command.line.insert(command.line.begin(), programPath("DAXService"));
    command.environment["KOVAN_DLOG"] = (root / DAEMON_LOG).string();
    command.ignoredSignals = ignoredSignals;
    return std::make_unique<Process>(command);
}

std::unique_ptr<Service::IServiceManager> Desk::connect() const {
    return DAXIPC::DBUSLowLevel::CServiceManagerProxyFactory(
               Common::DBUSWrapper::IDBUSProxy::createDefaultProxyFactory())
        .create();
}

std::string Desk::uniqueNameOfDaemon() {
    const RawMessage call(
        dbus_message_new_method_call("org.freedesktop.DBus", "/", "org.freedesktop.DBus", "GetNameOwner"));
    dbus_message_append_args(call.get(), DBUS_TYPE_STRING, &DAEMON_NAME, DBUS_TYPE_INVALID);
    const RawMessage reply = m_observer.call(*call);
    const char* name = "";
    if (reply) {
        dbus_message_get_args(reply.get(), nullptr, DBUS_TYPE_STRING, &name, DBUS_TYPE_INVALID);
    }
    return name;
}

pid_t Desk::ownerOf(const std::string& name) {
    RawMessage call(dbus_message_new_method_call("org.freedesktop.DBus", "/", "org.freedesktop.DBus",
                                                 "GetConnectionUnixProcessID"));
    const char* text = name.c_str();
    dbus_message_append_args(call.get(), DBUS_TYPE_STRING, &text, DBUS_TYPE_INVALID);
    const RawMessage reply = m_observer.call(*call);
    dbus_uint32_t pid = 0;
    if (reply) {
        dbus_message_get_args(reply.get(), nullptr, DBUS_TYPE_UINT32, &pid, DBUS_TYPE_INVALID);
    }
    return static_cast<pid_t>(pid);
}

// A call can have the bus start the program anew between two looks.
void Desk::killOwner(const std::string& name) {
    waitUntil([&] {
        const pid_t pid = ownerOf(name);
        if (pid != 0) {
            ::kill(pid, SIGKILL);
            waitUntil([pid] { return hasEnded(pid); });
        }
        return pid == 0;
    });
}

void Desk::killDaemon() {
    killOwner(DAEMON_NAME);
}

void Desk::killCore() {
    killOwner(CORE_NAME);
}

std::vector<std::string> Desk::daemonMessages() const {
    std::vector<std::string> messages;
    for (const std::string& line : linesOf(daemonLog())) {
        const auto file = line.rfind(".cpp:", line.find('>'));
        messages.push_back(file == std::string::npos ? line : line.substr(line.find('>', file) + 1));
    }
    return messages;
}

int Desk::countMessages(const std::string& part) const {
    const auto messages = daemonMessages();
    return static_cast<int>(std::count_if(messages.begin(), messages.end(), [&part](const std::string& message) {
        return message.find(part) != std::string::npos;
    }));
}

bool Desk::waitForMessage(const std::string& part) const {
    return waitUntil([this, &part] { return countMessages(part) > 0; });
}

std::vector<nlohmann::json> Desk::coreCalls() const {
    std::vector<nlohmann::json> calls;
    for (const std::string& line : linesOf(root.read(CORE_CALLS))) {
        calls.push_back(nlohmann::json::parse(line));
    }
    return calls;
}

std::vector<std::string> Desk::coreMethods() const {
    std::vector<std::string> methods;
    for (const auto& call : coreCalls()) {
        methods.push_back(call.at("method"));
    }
    return methods;
}

bool Desk::waitForCoreCall(const std::string& method, int count) const {
    return waitUntil([&] {
        const auto methods = coreMethods();
        return std::count(methods.begin(), methods.end(), method) >= count;
    });
}

std::string Desk::setting(const std::string& key) const {
    const FinishedRun finished = run("kovanctl", {"setting", "get", key});
    return finished.end == ProcessEnd::exited(0) ? finished.output.substr(0, finished.output.find('\n')) : "absent";
}

} // namespace Tests
} // namespace DAX
