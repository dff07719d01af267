#include "Common/DBUSWrapper/Implementation/ClientBus.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <limits>

#include <dbus/dbus.h>
#include <poll.h>

#include "Common/DBUSWrapper/DBUSWrapperExceptions.h"
#include "Common/DBUSWrapper/Implementation/ConnectionOpening.h"
#include "Common/DBUSWrapper/Implementation/DBUSResources.h"
#include "Common/DBUSWrapper/Implementation/SystemBus.h"
#include "Utility/Utils/ErrInfoStream.h"

namespace DAX::Common::DBUSWrapper {

using DBUSWrapperExceptions::ErrorConnectingToDBUS;

namespace {

using Clock = std::chrono::steady_clock;

// The longest wait for an answer before what could not be written is tried again.
const int LOOK_INTERVAL_MS = 10;

// As libdbus finds the system bus.
std::string systemBus() {
    const char* const address = std::getenv("DBUS_SYSTEM_BUS_ADDRESS");
    return address != nullptr && *address != '\0' ? address : SYSTEM_BUS_DEFAULT_ADDRESS;
}

[[noreturn]] void throwCannotConnect(const DBUSError& error) {
    DAX_THROW(ErrorConnectingToDBUS(), error.message() << errinfo_bus_error(error.name()));
}

[[noreturn]] void throwNoMemory() {
    DAX_THROW(DBUSWrapperExceptions::DBUSMemoryError(), "A connection cannot be made.");
}

// Waits for the answer with a bound, which libdbus's own waiting has only once the far end has let this process in.
DBUSMessageHandle answerTo(dbus_uint32_t serial, DBusConnection& connection, Clock::time_point deadline,
                           DBUSError& error) {
    int fd = -1;
    dbus_connection_get_unix_fd(&connection, &fd);
    for (;;) {
        dbus_connection_read_write(&connection, 0);
        while (DBUSMessageHandle message{dbus_connection_pop_message(&connection)}) {
            if (dbus_message_get_reply_serial(message.get()) == serial) {
                return message;
            }
        }
        if (!dbus_connection_get_is_connected(&connection)) {
            dbus_set_error_const(error.get(), DBUS_ERROR_DISCONNECTED, "The bus has closed the connection.");
            return nullptr;
        }
        if (Clock::now() >= deadline) {
            dbus_set_error_const(error.get(), DBUS_ERROR_TIMEOUT, "The bus does not answer.");
            return nullptr;
        }
        pollfd traffic{fd, POLLIN, 0};
        poll(&traffic, 1, LOOK_INTERVAL_MS);
    }
}

// What dbus_bus_register() does, which cannot be told how long to wait.
void sayHelloToTheBus(DBusConnection& connection, Clock::time_point deadline) {
    const DBUSMessageHandle hello(
        dbus_message_new_method_call(DBUS_SERVICE_DBUS, DBUS_PATH_DBUS, DBUS_INTERFACE_DBUS, "Hello"));
    dbus_uint32_t serial = 0;
    if (hello == nullptr || !dbus_connection_send(&connection, hello.get(), &serial)) {
        throwNoMemory();
    }
    DBUSError error;
    const DBUSMessageHandle answer = answerTo(serial, connection, deadline, error);
    const char* name = nullptr;
    if (answer == nullptr || dbus_set_error_from_message(error.get(), answer.get()) ||
        !dbus_message_get_args(answer.get(), error.get(), DBUS_TYPE_STRING, &name, DBUS_TYPE_INVALID)) {
        throwCannotConnect(error);
    }
    if (!dbus_bus_set_unique_name(&connection, name)) {
        throwNoMemory();
    }
}

} // namespace

int timeoutOf(const ClientConnection& connection) {
    const unsigned int longest = std::numeric_limits<int>::max() - 1; // the next one means "for ever" to libdbus
    return static_cast<int>(std::min(connection.timeoutMs, longest));
}

DBUSConnectionHandle openClientConnection(const ClientConnection& how) {
    const auto deadline = Clock::now() + std::chrono::milliseconds(timeoutOf(how));
    DBUSError error;
    DBUSConnectionHandle connection = openConnection(how.address.empty() ? systemBus() : how.address, deadline, error);
    if (connection == nullptr) {
        throwCannotConnect(error);
    }
    sayHelloToTheBus(*connection, deadline);
    return connection;
}

} // namespace DAX::Common::DBUSWrapper
