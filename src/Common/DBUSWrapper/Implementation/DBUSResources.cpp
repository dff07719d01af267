#include "Common/DBUSWrapper/Implementation/DBUSResources.h"

#include "Common/DBUSWrapper/DBUSWrapperExceptions.h"
#include "Utility/Utils/ErrInfoStream.h"

namespace DAX::Common::DBUSWrapper {

void CloseConnection::operator()(DBusConnection* connection) const {
    // libdbus wants a private connection closed before it is released.
    dbus_connection_close(connection);
    dbus_connection_unref(connection);
}

bool wantsReply(DBusMessage* message) {
    return dbus_message_get_type(message) == DBUS_MESSAGE_TYPE_METHOD_CALL && !dbus_message_get_no_reply(message);
}

DBUSConnectionHandle openPrivateConnection(IDBUSWrapper::DBUSType type) {
    DBUSError error;
    DBUSConnectionHandle connection(
        dbus_bus_get_private(type == IDBUSWrapper::SESSION ? DBUS_BUS_SESSION : DBUS_BUS_SYSTEM, error.get()));
    if (error.isSet()) {
        DAX_THROW(DBUSWrapperExceptions::ErrorConnectingToDBUS(), error.message());
    }
    return connection;
}

} // namespace DAX::Common::DBUSWrapper
