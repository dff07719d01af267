#include "monitor/BusWatch.h"

#include <ctime>
#include <fstream>
#include <new>
#include <stdexcept>
#include <vector>

#include <poll.h>
#include <unistd.h>

#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/DBUSDefines.h"
#include "monitor/Implementation/LibDBus.h"

namespace monitor {

using namespace libdbus;

namespace {

namespace Names = DAX::DAXIPC::DBUSLowLevel::DBUSNames;

const int ANSWER_TIMEOUT_MS = 2000;

std::int64_t now() {
    timespec time;
    clock_gettime(CLOCK_REALTIME, &time);
    return std::int64_t(time.tv_sec) * 1000000 + time.tv_nsec / 1000;
}

Connection connect() {
    Error error;
    DBusConnection* const connection = dbus_bus_get_private(DBUS_BUS_SYSTEM, error.get());
    if (connection == nullptr) {
        throw std::runtime_error("There is no system bus: " + error.text() +
                                 ". DBUS_SYSTEM_BUS_ADDRESS names another one.");
    }
    dbus_connection_set_exit_on_disconnect(connection, FALSE);
    return Connection(connection);
}

Message busCall(const char* interface, const char* method) {
    return Message(dbus_message_new_method_call(DBUS_SERVICE_DBUS, DBUS_PATH_DBUS, interface, method));
}

// What a monitor gets of all that goes over the bus. Errors of the bus itself answer calls that could not be delivered.
std::vector<std::string> matchRules(const std::string& observer) {
    const std::string service = Names::DBUSService::DBUSIServiceManager::CONNECTION_NAME;
    const std::string core = Names::DBUSCore::DBUSICore::CONNECTION_NAME();
    return {"destination='" + service + "'", "sender='" + service + "'", "destination='" + core + "'",
            "sender='" + core + "'", "type='error',sender='org.freedesktop.DBus'",
            "type='signal',sender='org.freedesktop.DBus',member='NameOwnerChanged'",
            // What this program asks about the callers, so that a capture has the answers as well.
            "type='method_call',destination='org.freedesktop.DBus',sender='" + observer + "'",
            "type='method_return',sender='org.freedesktop.DBus',destination='" + observer + "'"};
}

[[noreturn]] void throwNoMonitor(const Error& error) {
    if (error.is(DBUS_ERROR_ACCESS_DENIED) && geteuid() == 0) {
        throw std::runtime_error("The rules of this bus let nobody see what others send. Allow the interface " +
                                 std::string(DBUS_INTERFACE_MONITORING) +
                                 " in them, or read a capture that somebody else has made with --read.");
    }
    if (error.is(DBUS_ERROR_ACCESS_DENIED)) {
        throw std::runtime_error("This bus does not let you see what others send. Be root, or the user that the bus "
                                 "runs as: sudo daxctl monitor. A capture that somebody else has made can be read "
                                 "with --read.");
    }
    if (error.is(DBUS_ERROR_UNKNOWN_METHOD) || error.is(DBUS_ERROR_UNKNOWN_INTERFACE)) {
        throw std::runtime_error("This bus knows no monitors: it is too old. Update it, or run the update service on "
                                 "another bus that DBUS_SYSTEM_BUS_ADDRESS names.");
    }
    throw std::runtime_error("This bus does not let you see what others send: " + error.text());
}

void becomeMonitor(DBusConnection& connection, const std::vector<std::string>& rules) {
    const Message call = busCall(DBUS_INTERFACE_MONITORING, "BecomeMonitor");
    DBusMessageIter arguments;
    DBusMessageIter texts;
    dbus_message_iter_init_append(call.get(), &arguments);
    dbus_message_iter_open_container(&arguments, DBUS_TYPE_ARRAY, "s", &texts);
    for (const std::string& rule : rules) {
        const char* const text = rule.c_str();
        dbus_message_iter_append_basic(&texts, DBUS_TYPE_STRING, &text);
    }
    dbus_message_iter_close_container(&arguments, &texts);
    const dbus_uint32_t flags = 0;
    dbus_message_iter_append_basic(&arguments, DBUS_TYPE_UINT32, &flags);
    Error error;
    const Message answer(
        dbus_connection_send_with_reply_and_block(&connection, call.get(), ANSWER_TIMEOUT_MS, error.get()));
    if (!answer) {
        throwNoMonitor(error);
    }
}

struct Free {
    void operator()(char* bytes) const { dbus_free(bytes); }
};

} // namespace

struct BusWatch::Connections {
    explicit Connections(IsOver over) : isOver(std::move(over)) {}

    IsOver isOver;
    // A monitor may not send, so that the questions about callers go over another connection. Whoever may send to it
    // can send as much as he likes: all that is no answer is dropped as soon as it is read.
    Connection observer = connect();
    Connection monitor = connect();

    Message ask(const char* method, const std::string& name) const {
        const Message call = busCall(DBUS_INTERFACE_DBUS, method);
        const char* const text = name.c_str();
        dbus_message_append_args(call.get(), DBUS_TYPE_STRING, &text, DBUS_TYPE_INVALID);
        dbus_uint32_t serial = 0;
        if (!dbus_connection_send(observer.get(), call.get(), &serial)) {
            throw std::bad_alloc();
        }
        const int pauseMs = 50;
        const auto deadline = Clock::now() + std::chrono::milliseconds(ANSWER_TIMEOUT_MS);
        Message answer;
        while (!answer && Clock::now() < deadline && !isOver() && dbus_connection_read_write(observer.get(), pauseMs)) {
            answer = takeAnswer(serial);
        }
        return answer && dbus_message_get_type(answer.get()) == DBUS_MESSAGE_TYPE_METHOD_RETURN ? std::move(answer)
                                                                                                : nullptr;
    }

    // Keeps what nobody has asked for from coming together here or at the bus. A bus that sends without an end gets no
    // more than a part of the time.
    void dropUnwanted() const {
        int descriptor = -1;
        dbus_connection_get_unix_fd(observer.get(), &descriptor);
        pollfd input{descriptor, POLLIN, 0};
        const auto deadline = Clock::now() + std::chrono::milliseconds(20);
        while (::poll(&input, 1, 0) == 1 && Clock::now() < deadline && dbus_connection_read_write(observer.get(), 0)) {
            takeAnswer(0);
        }
    }

private:
    using Clock = std::chrono::steady_clock;

    // The bus's answer to the call of this serial, or none. Drops everything else that has come.
    Message takeAnswer(dbus_uint32_t serial) const {
        Message answer;
        while (Message message{dbus_connection_pop_message(observer.get())}) {
            if (serial != 0 && dbus_message_get_reply_serial(message.get()) == serial &&
                dbus_message_has_sender(message.get(), DBUS_SERVICE_DBUS)) {
                answer = std::move(message);
            }
        }
        return answer;
    }
};

BusWatch::BusWatch(IsOver isOver) : m_connections(std::make_unique<Connections>(std::move(isOver))) {
    becomeMonitor(*m_connections->monitor, matchRules(dbus_bus_get_unique_name(m_connections->observer.get())));
}

BusWatch::~BusWatch() = default;

bool BusWatch::wait(std::chrono::milliseconds time, const Take& take) {
    DBusConnection* const monitor = m_connections->monitor.get();
    if (!dbus_connection_read_write(monitor, static_cast<int>(time.count()))) {
        return false;
    }
    m_connections->dropUnwanted();
    // Without dispatching: libdbus would answer the calls, which are for somebody else.
    while (const Message message{dbus_connection_pop_message(monitor)}) {
        if (dbus_message_is_signal(message.get(), DBUS_INTERFACE_LOCAL, "Disconnected")) {
            return false;
        }
        char* bytes = nullptr;
        int size = 0;
        if (!dbus_message_marshal(message.get(), &bytes, &size)) {
            throw std::bad_alloc();
        }
        const std::unique_ptr<char, Free> owner(bytes);
        take(read(*message, now()), std::string_view(bytes, static_cast<std::size_t>(size)));
    }
    return true;
}

std::string BusWatch::ownerOf(const std::string& name) {
    const Message answer = m_connections->ask("GetNameOwner", name);
    const char* owner = nullptr;
    const bool isOwned =
        answer && dbus_message_get_args(answer.get(), nullptr, DBUS_TYPE_STRING, &owner, DBUS_TYPE_INVALID);
    return isOwned ? owner : "";
}

std::optional<Process> BusWatch::processOf(const std::string& connection) {
    const Message answer = m_connections->ask("GetConnectionUnixProcessID", connection);
    dbus_uint32_t pid = 0;
    if (!answer || !dbus_message_get_args(answer.get(), nullptr, DBUS_TYPE_UINT32, &pid, DBUS_TYPE_INVALID)) {
        return std::nullopt;
    }
    Process process{pid, {}};
    std::ifstream file("/proc/" + std::to_string(pid) + "/comm");
    std::getline(file, process.name);
    return process;
}

} // namespace monitor
