#pragma once

#include <dbus/dbus.h>

namespace DAX::Common::DBUSWrapper {

// The calls that every program on a bus understands: "Ping" and "GetMachineId" of org.freedesktop.DBus.Peer. libdbus
// would answer them by itself, but even when the sender wants no answer; the bus then rejects and logs that answer.
// After this call the connection leaves them to answerPeerCall().
void takePeerCalls(DBusConnection* connection);

// Answers as libdbus would, but sends nothing when no answer is wanted. Returns false for a message of another
// interface. Throws DBUSMemoryError.
bool answerPeerCall(DBusConnection* connection, DBusMessage* message);

} // namespace DAX::Common::DBUSWrapper
