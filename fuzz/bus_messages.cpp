// Sends any sequence of messages of up to four peers to a live adapter with the daemon's handler, on a bus of its own.
// After each sequence the adapter still answers, and answers once; every call that waits for a reply has got one, and
// nothing else has; and the adapter has forgotten the clients that have left.
#include <chrono>
#include <cstdlib>
#include <memory>
#include <set>

#include <fcntl.h>
#include <unistd.h>

#include "BusMessagesInput.h"
#include "BusPeers.h"
#include "BusService.h"
#include "support/PrivateBus.h"
#include "support/RawPeer.h"
#include "support/TemporaryRoot.h"
#include "support/WaitUntil.h"

namespace {

using namespace DAX;

namespace Manager = DAXIPC::DBUSLowLevel::DBUSNames::DBUSService::DBUSIServiceManager;

const std::chrono::milliseconds BOUND{5000};

// A device with production software, where the loop has no watchdogs, which are threads.
class Device {
public:
    Device() { m_root.write("etc/kovan/device.ini", "[software]\nproduction=true\n"); }

private:
    const Tests::TemporaryRoot m_root;
};

// The bus reports every message that it drops on its standard error, which would bury libFuzzer's own lines.
std::unique_ptr<Tests::PrivateBus> startQuietBus() {
    const int standardError = dup(STDERR_FILENO);
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    dup2(nowhere, STDERR_FILENO);
    auto bus = std::make_unique<Tests::PrivateBus>();
    dup2(standardError, STDERR_FILENO);
    close(nowhere);
    close(standardError);
    return bus;
}

// What stays from one input to the next: the bus, the service, and a client of it that never leaves.
class World {
public:
    World();

    void run(const std::vector<Fuzz::BusStep>& steps);

private:
    Tests::RawMessage callService(const char* member);
    void checkThatItAnswers();
    unsigned int matchRules();
    void watchReplies();
    void checkUnwantedReplies(const Fuzz::BusPeers& peers);

    const Device m_device;
    const std::unique_ptr<Tests::PrivateBus> m_bus = startQuietBus();
    Tests::RawPeer m_master;
    Tests::RawPeer m_monitor;
    const Fuzz::BusService m_service{m_master.name()};
    std::string m_serviceName;
    unsigned int m_rulesAtFirst = 0;
};

World::World() {
    if (!m_master.waitForNameOwner(Manager::CONNECTION_NAME, true)) {
        Fuzz::fail("the service does not start");
    }
    const auto owner = Fuzz::callOrFail(
        m_master, *Fuzz::makeBusCall("GetNameOwner", DBUS_INTERFACE_DBUS, Manager::CONNECTION_NAME), "GetNameOwner");
    const char* name = nullptr;
    dbus_message_get_args(owner.get(), nullptr, DBUS_TYPE_STRING, &name, DBUS_TYPE_INVALID);
    m_serviceName = name;
    watchReplies();
    checkThatItAnswers();
    m_rulesAtFirst = matchRules();
}

Tests::RawMessage World::callService(const char* member) {
    const Tests::RawMessage call(
        dbus_message_new_method_call(Manager::CONNECTION_NAME, Manager::OBJECT_PATH, Manager::INTERFACE_NAME, member));
    return Fuzz::callOrFail(m_master, *call, member);
}

void World::checkThatItAnswers() {
    const Tests::RawMessage reply = callService("getServiceOwner");
    const std::vector<std::string> parts = Tests::byteArrays(*reply);
    if (parts.size() != 3 || parts[0] != "REPLY" || parts[1] != "getServiceOwner") {
        Fuzz::fail("the adapter gives a bad answer");
    }
}

// How many match rules the bus keeps for the adapter: one for each client on its list, and those that it always has.
unsigned int World::matchRules() {
    const auto reply = Fuzz::callOrFail(
        m_master, *Fuzz::makeBusCall("GetConnectionStats", "org.freedesktop.DBus.Debug.Stats", m_serviceName),
        "GetConnectionStats");
    DBusMessageIter arguments, entries, entry, value;
    if (!dbus_message_iter_init(reply.get(), &arguments) ||
        dbus_message_iter_get_arg_type(&arguments) != DBUS_TYPE_ARRAY) {
        Fuzz::fail("the bus counts no match rules");
    }
    for (dbus_message_iter_recurse(&arguments, &entries);
         dbus_message_iter_get_arg_type(&entries) == DBUS_TYPE_DICT_ENTRY; dbus_message_iter_next(&entries)) {
        const char* key = nullptr;
        dbus_message_iter_recurse(&entries, &entry);
        dbus_message_iter_get_basic(&entry, &key);
        if (std::string(key) == "MatchRules") {
            dbus_uint32_t count = 0;
            dbus_message_iter_next(&entry);
            dbus_message_iter_recurse(&entry, &value);
            dbus_message_iter_get_basic(&value, &count);
            return count;
        }
    }
    Fuzz::fail("the bus counts no match rules");
}

// The bus shows the monitor what the adapter replies, including the replies that the bus then drops.
void World::watchReplies() {
    const Tests::RawMessage call = Fuzz::makeBusCall("BecomeMonitor", "org.freedesktop.DBus.Monitoring");
    const std::string returns = "type='method_return',sender='" + m_serviceName + "'";
    const std::string errors = "type='error',sender='" + m_serviceName + "'";
    const char* const rules[] = {returns.c_str(), errors.c_str()};
    const char* const* rulesStart = rules;
    const dbus_uint32_t flags = 0;
    dbus_message_append_args(call.get(), DBUS_TYPE_ARRAY, DBUS_TYPE_STRING, &rulesStart, 2, DBUS_TYPE_UINT32, &flags,
                             DBUS_TYPE_INVALID);
    const Tests::RawMessage reply = Fuzz::callOrFail(m_monitor, *call, "BecomeMonitor");
    if (dbus_message_get_type(reply.get()) != DBUS_MESSAGE_TYPE_METHOD_RETURN) {
        Fuzz::fail("the bus allows no monitor");
    }
}

// Reads up to the adapter's reply to the call that the master makes here, which comes after those to the peers. Each
// call of the master has exactly one reply.
void World::checkUnwantedReplies(const Fuzz::BusPeers& peers) {
    const Tests::RawMessage last = callService("getServiceOwner");
    const dbus_uint32_t lastSerial = dbus_message_get_reply_serial(last.get());
    std::set<dbus_uint32_t> answered;
    const auto deadline = std::chrono::steady_clock::now() + BOUND;
    while (answered.count(lastSerial) == 0) {
        dbus_connection_read_write(m_monitor.connection(), 100);
        while (const Tests::RawMessage reply{dbus_connection_pop_message(m_monitor.connection())}) {
            const char* const destination = dbus_message_get_destination(reply.get());
            const dbus_uint32_t serial = dbus_message_get_reply_serial(reply.get());
            if (destination == nullptr) {
                continue;
            }
            if (peers.wantedNoReply(destination, serial)) {
                Fuzz::fail("a reply to a message that wants none");
            }
            if (destination == m_master.name() && !answered.insert(serial).second) {
                Fuzz::fail("two replies to one call");
            }
        }
        if (std::chrono::steady_clock::now() > deadline) {
            Fuzz::fail("the monitor sees no reply");
        }
    }
}

void World::run(const std::vector<Fuzz::BusStep>& steps) {
    Fuzz::BusPeers peers(m_master, m_serviceName);
    peers.play(steps);
    checkThatItAnswers();
    peers.checkReplies();
    checkUnwantedReplies(peers);
    peers.leave();
    callService(Fuzz::RestorableHandler::RESTORE);
    m_master.takeOthers();
    // The adapter may learn of a death only after the bus has answered it a question.
    if (!Tests::waitUntil([this] { return matchRules() <= m_rulesAtFirst + m_service.refusedDeaths(); }, BOUND)) {
        Fuzz::fail("the adapter keeps clients that have left");
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    setenv("KOVAN_DLOG", "none", 0);
    dbus_threads_init_default();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static World world;
    world.run(Fuzz::readBusSteps(data, size));
    return 0;
}
