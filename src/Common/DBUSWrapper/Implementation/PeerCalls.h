#pragma once

#include <dbus/dbus.h>

namespace DAX::Common::DBUSWrapper {

// The calls that every program on a bus understands: "Ping" and "GetMachineId" of org.freedesktop.DBus.Peer. libdbus
// answers them by itself, but also when the sender wants no answer, which the bus then rejects and logs. After this,
// the connection leaves them to answerPeerCall().
void takePeerCalls(DBusConnection* connection);

// Answers as libdbus would, and nothing where no answer is wanted. False when the message is of another interface.
// Throws DBUSMemoryError.
bool answerPeerCall(DBusConnection* connection, DBusMessage* message);

} // namespace DAX::Common::DBUSWrapper
