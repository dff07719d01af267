#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include <dbus/dbus.h>

#include "monitor/BusMessage.h"

// What the sources of this module that call libdbus share. Common/DBUSWrapper does the same for the system's own ends,
// which send and answer calls; a monitor needs what they must not have: every message as it is, whoever it is for.
namespace monitor::libdbus {

struct Unref {
    void operator()(DBusMessage* message) const { dbus_message_unref(message); }
};
using Message = std::unique_ptr<DBusMessage, Unref>;

struct Close {
    void operator()(DBusConnection* connection) const {
        dbus_connection_close(connection);
        dbus_connection_unref(connection);
    }
};
using Connection = std::unique_ptr<DBusConnection, Close>;

class Error {
public:
    Error() { dbus_error_init(&m_error); }
    ~Error() { dbus_error_free(&m_error); }
    Error(const Error&) = delete;
    Error& operator=(const Error&) = delete;

    DBusError* get() { return &m_error; }
    bool is(const char* name) const { return dbus_error_has_name(&m_error, name); }
    std::string text() const { return m_error.message != nullptr ? m_error.message : "no reason"; }

private:
    DBusError m_error;
};

// Takes out of a message what matters here.
BusMessage read(DBusMessage& message, std::int64_t time);

} // namespace monitor::libdbus
