#include "roundtrip/BareServer.h"

#include <cstring>

#include <dbus/dbus.h>

namespace Roundtrip {
namespace {

DBusHandlerResult answer(DBusConnection* connection, DBusMessage* message, void* /*data*/) {
    const char* in = nullptr;
    int inLength = 0;
    dbus_message_get_args(message, nullptr, DBUS_TYPE_ARRAY, DBUS_TYPE_BYTE, &in, &inLength, DBUS_TYPE_INVALID);
    const char* type = "REPLY";
    const char* function = dbus_message_get_member(message);
    const char* out = "22 serialization::archive 19 0 0 0  0";
    DBusMessage* reply = dbus_message_new_method_return(message);
    dbus_message_append_args(reply, DBUS_TYPE_ARRAY, DBUS_TYPE_BYTE, &type, static_cast<int>(std::strlen(type)),
                             DBUS_TYPE_ARRAY, DBUS_TYPE_BYTE, &function, static_cast<int>(std::strlen(function)),
                             DBUS_TYPE_ARRAY, DBUS_TYPE_BYTE, &out, static_cast<int>(std::strlen(out)),
                             DBUS_TYPE_INVALID);
    dbus_connection_send(connection, reply, nullptr);
    dbus_message_unref(reply);
    return DBUS_HANDLER_RESULT_HANDLED;
}

} // namespace

int runBareServer(const std::string& connectionName, const std::string& objectPath) {
    DBusConnection* connection = dbus_bus_get_private(DBUS_BUS_SYSTEM, nullptr);
    if (connection == nullptr) {
        return 1;
    }
    DBusObjectPathVTable table{};
    table.message_function = answer;
    dbus_connection_set_exit_on_disconnect(connection, false);
    dbus_connection_register_object_path(connection, objectPath.c_str(), &table, nullptr);
    dbus_bus_request_name(connection, connectionName.c_str(), DBUS_NAME_FLAG_DO_NOT_QUEUE, nullptr);
    while (dbus_connection_read_write_dispatch(connection, -1)) {
    }
    dbus_connection_close(connection);
    dbus_connection_unref(connection);
    return 0;
}

} // namespace Roundtrip
