#pragma once

#include "Common/DBUSWrapper/ClientConnection.h"
#include "Common/DBUSWrapper/Implementation/DBUSConnectionHandle.h"

namespace DAX::Common::DBUSWrapper {

// A new connection that has a unique name. Throws ErrorConnectingToDBUS with the message of libdbus and its
// errinfo_bus_error, which is DBUS_ERROR_TIMEOUT when there is none within the time-out. Any thread.
DBUSConnectionHandle openClientConnection(const ClientConnection& connection);

} // namespace DAX::Common::DBUSWrapper
