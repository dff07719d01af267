#include "Common/DBUSWrapper/Implementation/ClientBus.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

#include <dbus/dbus.h>

#include "Common/DBUSWrapper/DBUSWrapperExceptions.h"
#include "Common/DBUSWrapper/Implementation/DBUSResources.h"
#include "Common/DBUSWrapper/Implementation/SystemBus.h"
#include "Utility/Utils/ErrInfoStream.h"

namespace DAX::Common::DBUSWrapper {

using DBUSWrapperExceptions::ErrorConnectingToDBUS;

namespace {

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

// What dbus_bus_register() does, which cannot be told how long to wait.
void sayHelloToTheBus(DBusConnection& connection, int timeoutMs) {
    const DBUSMessageHandle hello(
        dbus_message_new_method_call(DBUS_SERVICE_DBUS, DBUS_PATH_DBUS, DBUS_INTERFACE_DBUS, "Hello"));
    if (hello == nullptr) {
        throwNoMemory();
    }
    DBUSError error;
    const DBUSMessageHandle answer(
        dbus_connection_send_with_reply_and_block(&connection, hello.get(), timeoutMs, error.get()));
    const char* name = nullptr;
    if (answer == nullptr ||
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
    DBUSError error;
    const std::string address = how.address.empty() ? systemBus() : how.address;
    DBUSConnectionHandle connection(dbus_connection_open_private(address.c_str(), error.get()));
    if (connection == nullptr) {
        throwCannotConnect(error);
    }
    sayHelloToTheBus(*connection, timeoutOf(how));
    return connection;
}

} // namespace DAX::Common::DBUSWrapper
