#include "Common/DBUSWrapper/Implementation/ClientBus.h"

#include <chrono>
#include <cstdlib>

#include <dbus/dbus.h>

#include "Common/DBUSWrapper/DBUSWrapperExceptions.h"
#include "Common/DBUSWrapper/Implementation/ConnectionOpening.h"
#include "Common/DBUSWrapper/Implementation/ConnectionTraffic.h"
#include "Common/DBUSWrapper/Implementation/DBUSResources.h"
#include "Common/DBUSWrapper/Implementation/SystemBus.h"
#include "Utility/Utils/ErrInfoStream.h"

namespace DAX::Common::DBUSWrapper {

using DBUSWrapperExceptions::ErrorConnectingToDBUS;

namespace {

using Clock = ConnectionTraffic::Clock;

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
void sayHelloToTheBus(DBusConnection& connection, Clock::time_point deadline) {
    const DBUSMessageHandle hello(
        dbus_message_new_method_call(DBUS_SERVICE_DBUS, DBUS_PATH_DBUS, DBUS_INTERFACE_DBUS, "Hello"));
    if (hello == nullptr) {
        throwNoMemory();
    }
    DBUSError error;
    const DBUSMessageHandle answer = ConnectionTraffic(connection).call(*hello, deadline, error);
    if (answer == nullptr && !error.isSet()) {
        throwNoMemory();
    }
    if (error.hasName(DBUS_ERROR_TIMEOUT)) {
        DAX_THROW(ErrorConnectingToDBUS(), "The bus does not answer." << errinfo_bus_error(DBUS_ERROR_TIMEOUT));
    }
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

DBUSConnectionHandle openClientConnection(const ClientConnection& how) {
    const auto deadline = Clock::now() + std::chrono::milliseconds(how.timeoutMs);
    DBUSError error;
    DBUSConnectionHandle connection = openConnection(how.address.empty() ? systemBus() : how.address, deadline, error);
    if (connection == nullptr) {
        throwCannotConnect(error);
    }
    sayHelloToTheBus(*connection, deadline);
    return connection;
}

} // namespace DAX::Common::DBUSWrapper
