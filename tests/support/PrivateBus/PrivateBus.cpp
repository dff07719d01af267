#include "support/PrivateBus.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <system_error>
#include <utility>

#include <dbus/dbus.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace DAX::Tests {
namespace {

namespace fs = std::filesystem;

// The descriptor at which the daemon finds the pipe for its address.
const int ADDRESS_FD = 3;

// The folder of all buses of this process. A forked child, such as a death test, leaves it to its parent.
class BusFolder {
public:
    static const fs::path& path() {
        static const BusFolder folder;
        return folder.m_path;
    }

private:
    BusFolder() : m_owner(getpid()) {
        std::string path = (fs::temp_directory_path() / "dax-bus-XXXXXX").string();
        if (mkdtemp(path.data()) == nullptr) {
            throw std::system_error(errno, std::generic_category(), "mkdtemp");
        }
        m_path = path;
        setenv("DBUS_SYSTEM_BUS_ADDRESS", ("unix:path=" + path + "/system").c_str(), 1);
        setenv("DBUS_SESSION_BUS_ADDRESS", ("unix:path=" + path + "/session").c_str(), 1);
    }
    ~BusFolder() {
        if (getpid() == m_owner) {
            std::error_code ignored;
            fs::remove_all(m_path, ignored);
        }
    }

    pid_t m_owner;
    fs::path m_path;
};

std::string limit(const std::string& name, unsigned int value) {
    return "  <limit name=\"" + name + "\">" + std::to_string(value) + "</limit>\n";
}

std::string everythingAllowed(unsigned int serviceStartTimeoutMs) {
    return "  <policy context=\"default\">\n"
           "    <allow user=\"*\"/>\n"
           "    <allow own=\"*\"/>\n"
           "    <allow send_destination=\"*\"/>\n" // except for replies that nobody waits for, as on the system bus
           "    <allow receive_type=\"method_call\"/>\n"
           "    <allow receive_type=\"method_return\"/>\n"
           "    <allow receive_type=\"error\"/>\n"
           "    <allow receive_type=\"signal\"/>\n"
           "  </policy>\n" +
           limit("service_start_timeout", serviceStartTimeoutMs) + limit("max_completed_connections", 100000) +
           limit("max_incomplete_connections", 100000) + limit("max_connections_per_user", 100000) +
           limit("max_pending_service_starts", 100000) + limit("max_names_per_connection", 100000) +
           limit("max_match_rules_per_connection", 100000) + limit("max_replies_per_connection", 100000) +
           limit("max_incoming_bytes", 1000000000) + limit("max_outgoing_bytes", 1000000000) +
           limit("max_message_size", 134217728);
}

std::string config(const std::string& address, const std::string& services, const std::string& rules) {
    return "<!DOCTYPE busconfig PUBLIC \"-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN\"\n"
           " \"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">\n"
           "<busconfig>\n"
           "  <listen>" +
           address +
           "</listen>\n"
           "  <auth>EXTERNAL</auth>\n"
           "  <servicedir>" +
           services + "</servicedir>\n" + rules + "</busconfig>\n";
}

std::string textOf(const fs::path& path) {
    std::ostringstream text;
    if (!(text << std::ifstream(path).rdbuf())) {
        throw std::runtime_error("cannot read " + path.string());
    }
    return text.str();
}

void write(const fs::path& path, const std::string& text) {
    std::ofstream file(path);
    file << text << std::flush;
    if (!file) {
        throw std::runtime_error("cannot write " + path.string());
    }
}

void replaceAll(std::string& text, const std::string& what, const std::string& by) {
    for (auto at = text.find(what); at != std::string::npos; at = text.find(what, at + by.size())) {
        text.replace(at, what.size(), by);
    }
}

// The policy with the user who runs the test in place of root, and DAX_GROUP in place of its own group.
std::string cast(std::string policy) {
    replaceAll(policy, "user=\"root\"", "user=\"" + std::to_string(geteuid()) + "\"");
    replaceAll(policy, "group=\"dax\"", std::string("group=\"") + SystemBusRules::DAX_GROUP + "\"");
    return policy;
}

// Copies the policies into the folder of the buses.
std::string included(const std::vector<std::string>& policies) {
    std::string includes;
    for (const fs::path policy : policies) {
        const fs::path copy = BusFolder::path() / ("policy-" + policy.filename().string());
        write(copy, cast(textOf(policy)));
        includes += "  <include>" + copy.string() + "</include>\n";
    }
    return includes;
}

std::string rulesText(const SystemBusRules& rules) {
    std::vector<std::string> policies = {std::string(BUS_POLICIES) + "/distribution.conf"};
    policies.insert(policies.end(), rules.policies.begin(), rules.policies.end());
    std::string text = "  <type>system</type>\n" + included(policies);
    for (const auto& [name, value] : rules.limits) {
        text += limit(name, value);
    }
    return text;
}

// setpriv arranges that the death of this thread signals the daemon, and then becomes the daemon.
pid_t spawnDaemon(const std::string& configPath, int addressPipe) {
    const std::string configOption = "--config-file=" + configPath;
    const std::string addressOption = "--print-address=" + std::to_string(ADDRESS_FD);
    const std::array<const char*, 10> arguments = {"setpriv",     "--pdeathsig",        "TERM",
                                                   "dbus-daemon", "--nofork",           "--nopidfile",
                                                   "--nosyslog",  configOption.c_str(), addressOption.c_str(),
                                                   nullptr};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, addressPipe, ADDRESS_FD);
    pid_t pid = 0;
    const int result =
        posix_spawnp(&pid, arguments[0], &actions, nullptr, const_cast<char* const*>(arguments.data()), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (result != 0) {
        throw std::system_error(result, std::generic_category(), "posix_spawnp");
    }
    return pid;
}

// True when the daemon has printed its address, false when it ended before.
bool waitForAddress(int addressPipe) {
    char character = 0;
    ssize_t count = 0;
    do {
        count = read(addressPipe, &character, 1);
    } while ((count == 1 && character != '\n') || (count == -1 && errno == EINTR));
    return count == 1;
}

} // namespace

SystemBusRules SystemBusRules::ofDevice(std::map<std::string, unsigned int> limits) {
    return {{std::string(PACKAGING) + "/org.kovan.tv.dax.service.servicemanager.conf",
             std::string(BUS_POLICIES) + "/org.kovan.tv.dax.core.TV.conf"},
            std::move(limits)};
}

PrivateBus::PrivateBus(Kind kind, unsigned int serviceStartTimeoutMs) {
    start(kind, everythingAllowed(serviceStartTimeoutMs));
}

PrivateBus::PrivateBus(const SystemBusRules& rules) {
    fs::permissions(BusFolder::path(), fs::perms::group_exec | fs::perms::others_exec, fs::perm_options::add);
    start(Kind::SYSTEM, rulesText(rules));
}

void PrivateBus::start(Kind kind, const std::string& rules) {
    dbus_threads_init_default(); // as the programs do, before several threads connect at once
    const std::string name = kind == Kind::SYSTEM ? "system" : "session";
    const fs::path base = BusFolder::path() / name;
    m_address = "unix:path=" + base.string();
    m_services = base.string() + ".services";
    fs::remove(base);
    fs::remove_all(m_services);
    fs::create_directory(m_services);
    const std::string configPath = base.string() + ".conf";
    write(configPath, config(m_address, m_services, rules));

    std::array<int, 2> addressPipe{};
    if (pipe2(addressPipe.data(), O_CLOEXEC) != 0) {
        throw std::system_error(errno, std::generic_category(), "pipe2");
    }
    m_pid = spawnDaemon(configPath, addressPipe[1]);
    close(addressPipe[1]);
    const bool started = waitForAddress(addressPipe[0]);
    close(addressPipe[0]);
    if (!started) {
        stop();
        throw std::runtime_error("dbus-daemon did not start");
    }
}

PrivateBus::~PrivateBus() {
    stop();
}

void PrivateBus::addService(const std::string& busName, const std::string& execLine) {
    write(fs::path(m_services) / (busName + ".service"),
          "[D-BUS Service]\nName=" + busName + "\nExec=" + execLine + "\n");
}

void PrivateBus::stop() {
    if (m_pid == 0) {
        return;
    }
    kill(m_pid, SIGTERM);
    while (waitpid(m_pid, nullptr, 0) == -1 && errno == EINTR) {
    }
    m_pid = 0;
}

} // namespace DAX::Tests
