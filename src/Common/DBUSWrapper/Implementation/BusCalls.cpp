#include "Common/DBUSWrapper/Implementation/BusCalls.h"

#include <utility>

#include "Common/DBUSWrapper/DBUSWrapperExceptions.h"
#include "Utility/Utils/ErrInfoStream.h"

namespace DAX::Common::DBUSWrapper {

using DBUSWrapperExceptions::DBUSMemoryError;

DBUSMessageHandle BusCalls::make(const char* method, const std::string& argument) {
    DBUSMessageHandle call(
        dbus_message_new_method_call(DBUS_SERVICE_DBUS, DBUS_PATH_DBUS, DBUS_INTERFACE_DBUS, method));
    const char* const text = argument.c_str();
    if (call == nullptr || !dbus_message_append_args(call.get(), DBUS_TYPE_STRING, &text, DBUS_TYPE_INVALID)) {
        DAX_THROW(DBUSMemoryError(), "A call of the bus cannot be made.");
    }
    return call;
}

void BusCalls::send(DBusConnection* connection, DBUSMessageHandle call, Answer onAnswer) {
    dbus_uint32_t serial = 0;
    if (!dbus_connection_send(connection, call.get(), &serial)) {
        DAX_THROW(DBUSMemoryError(), "A call of the bus cannot be sent.");
    }
    m_open.emplace(serial, std::move(onAnswer));
}

bool BusCalls::receive(DBusMessage* message) {
    const auto found = m_open.find(dbus_message_get_reply_serial(message));
    if (found == m_open.end() || !dbus_message_has_sender(message, DBUS_SERVICE_DBUS)) {
        return false;
    }
    const Answer onAnswer = std::move(found->second);
    m_open.erase(found);
    onAnswer(*message);
    return true;
}

} // namespace DAX::Common::DBUSWrapper
