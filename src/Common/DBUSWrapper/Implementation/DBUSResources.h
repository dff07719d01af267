#pragma once

#include <memory>
#include <string>

#include <dbus/dbus.h>

#include "Common/DBUSWrapper/IDBUSWrapper.h"
#include "Common/DBUSWrapper/Implementation/DBUSConnectionHandle.h"

namespace DAX::Common::DBUSWrapper {

// Owners of what libdbus hands out.

class DBUSError {
public:
    DBUSError() { dbus_error_init(&m_error); }
    DBUSError(const DBUSError&) = delete;
    DBUSError& operator=(const DBUSError&) = delete;
    ~DBUSError() { dbus_error_free(&m_error); }

    DBusError* get() { return &m_error; }
    bool isSet() const { return dbus_error_is_set(&m_error) != 0; }
    bool hasName(const char* name) const { return dbus_error_has_name(&m_error, name) != 0; }
    const char* name() const { return m_error.name; }
    const char* message() const { return m_error.message; }

private:
    DBusError m_error;
};

struct UnrefMessage {
    void operator()(DBusMessage* message) const { dbus_message_unref(message); }
};
using DBUSMessageHandle = std::unique_ptr<DBusMessage, UnrefMessage>;

// True for a method call, unless its sender said that it wants no reply.
bool wantsReply(DBusMessage* message);

// A new connection of its own. Throws ErrorConnectingToDBUS with the message of libdbus.
DBUSConnectionHandle openPrivateConnection(IDBUSWrapper::DBUSType type);

} // namespace DAX::Common::DBUSWrapper
