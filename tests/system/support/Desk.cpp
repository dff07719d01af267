#include "system/support/Desk.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>

#include <nlohmann/json.hpp>
#include <unistd.h>

#include "Common/DBUSWrapper/IDBUSProxy.h"
#include "DAXIPC/DBUSLowLevel/Proxies/DAXServiceProxy/CServiceManagerProxyFactory.h"
#include "support/WaitUntil.h"

namespace DAX::Tests {

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

// The complete lines: another process may be writing the last one.
std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line) && !stream.eof();) {
        lines.push_back(line);
    }
    return lines;
}

// The argument of a reply, a text or an array of texts; empty for an error.
std::vector<std::string> stringsOf(const RawMessage& reply) {
    std::vector<std::string> strings;
    DBusMessageIter argument;
    if (reply == nullptr || dbus_message_get_type(reply.get()) != DBUS_MESSAGE_TYPE_METHOD_RETURN ||
        !dbus_message_iter_init(reply.get(), &argument)) {
        return strings;
    }
    DBusMessageIter elements = argument;
    if (dbus_message_iter_get_arg_type(&argument) == DBUS_TYPE_ARRAY) {
        dbus_message_iter_recurse(&argument, &elements);
    }
    for (; dbus_message_iter_get_arg_type(&elements) == DBUS_TYPE_STRING; dbus_message_iter_next(&elements)) {
        const char* text = nullptr;
        dbus_message_iter_get_basic(&elements, &text);
        strings.emplace_back(text);
    }
    return strings;
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
    setenv("KOVAN_DLOG", "none", 1); // for this process; the desk's programs log to their own files
    std::filesystem::create_directories(root / PARTITION); // every device has it
    m_bus.addService(DAEMON_NAME, execLine(root, DAEMON_LOG, "DAXService " + daemonOptions));
    m_bus.addService(CORE_NAME, execLine(root, CORE_LOG, "DAXCoreSimulator"));
}

Desk::~Desk() {
    const pid_t processes[] = {daemon(), core()};
    m_observer.disconnect();
    m_bus.stop();
    for (const pid_t pid : processes) {
        // To the bus, a name that the test itself had may still be the test's.
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

std::unique_ptr<Process> Desk::startByShell(const std::string& tool, const std::string& arguments) const {
    Command command;
    command.line = {"sh", "-c", "exec \"$0\" " + arguments, programPath(tool)};
    command.environment["KOVAN_DLOG"] = "none";
    return std::make_unique<Process>(command);
}

FinishedRun Desk::run(const std::string& tool, const std::vector<std::string>& arguments) const {
    const auto process = start(tool, arguments);
    const auto end = process->waitForEnd(std::chrono::seconds(60));
    return {end.value_or(ProcessEnd()), process->output(), process->errors()};
}

FinishedRun Desk::runAsNobody(const std::string& tool, const std::vector<std::string>& arguments) const {
    const std::string address = std::getenv("DBUS_SYSTEM_BUS_ADDRESS");
    const auto socket = std::filesystem::path(address.substr(0, address.find(',')).substr(address.find('/')));
    std::filesystem::permissions(socket.parent_path(), std::filesystem::perms(0755));
    std::filesystem::permissions(root.path(), std::filesystem::perms(0755));
    Command command;
    command.line = {"setpriv", "--reuid=65534", "--regid=65534", "--clear-groups", programPath(tool)};
    command.line.insert(command.line.end(), arguments.begin(), arguments.end());
    command.environment["KOVAN_DLOG"] = "none";
    return Tests::run(command, std::chrono::seconds(60));
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
    const auto owner = stringsOf(askBus("GetNameOwner", DAEMON_NAME));
    return owner.empty() ? "" : owner.front();
}

RawMessage Desk::askBus(const char* method, const std::string& argument) {
    RawMessage call(dbus_message_new_method_call("org.freedesktop.DBus", "/", "org.freedesktop.DBus", method));
    const char* text = argument.c_str();
    if (!argument.empty()) {
        dbus_message_append_args(call.get(), DBUS_TYPE_STRING, &text, DBUS_TYPE_INVALID);
    }
    return m_observer.call(*call);
}

pid_t Desk::ownerOf(const std::string& name) {
    const RawMessage reply = askBus("GetConnectionUnixProcessID", name);
    dbus_uint32_t pid = 0;
    if (reply) {
        dbus_message_get_args(reply.get(), nullptr, DBUS_TYPE_UINT32, &pid, DBUS_TYPE_INVALID);
    }
    return static_cast<pid_t>(pid);
}

std::vector<std::string> Desk::namelessConnectionsOf(pid_t pid) {
    const std::vector<std::string> names = stringsOf(askBus("ListNames"));
    std::set<std::string> owners;
    for (const std::string& name : names) {
        const auto owner = stringsOf(askBus("GetNameOwner", name));
        if (name.front() != ':' && !owner.empty()) {
            owners.insert(owner.front());
        }
    }
    std::vector<std::string> connections;
    std::copy_if(names.begin(), names.end(), std::back_inserter(connections), [&](const std::string& name) {
        return name.front() == ':' && owners.count(name) == 0 && ownerOf(name) == pid;
    });
    std::sort(connections.begin(), connections.end(), [](const std::string& left, const std::string& right) {
        return std::stoi(left.substr(3)) < std::stoi(right.substr(3)); // after ":1."
    });
    return connections;
}

// Between two looks, a call can make the bus start the program again.
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

} // namespace DAX::Tests
