#include "Common/DBUSWrapper/Implementation/BusName.h"

#include <utility>

#include "Common/DBUSWrapper/DBUSWrapperExceptions.h"
#include "Common/Logging/LoggingStream.h"
#include "Utility/Utils/ErrInfoStream.h"

namespace DAX::Common::DBUSWrapper {

const unsigned int BUS_NAME_FLAGS = DBUS_NAME_FLAG_REPLACE_EXISTING | DBUS_NAME_FLAG_DO_NOT_QUEUE;

BusName::BusName(BusCalls& calls, DBusConnection* connection, const std::string& name)
    : m_calls(calls), m_connection(connection), m_name(name) {}

void BusName::release() {
    m_calls.send(m_connection, BusCalls::make("ReleaseName", m_name), [this](DBusMessage&) { receiveRelease(); });
    m_state = State::RELEASING;
}

void BusName::receiveRelease() {
    // keep() may have claimed the name again before this answer came.
    if (m_state == State::RELEASING) {
        m_state = State::GONE;
    }
}

void BusName::keep() {
    if (m_state == State::HELD || m_state == State::CLAIMING) {
        return;
    }
    DAX_LOG(INF) << "A call has come in while the name {" << m_name << "} was given back. Requesting it again.";
    DBUSMessageHandle call = BusCalls::make("RequestName", m_name);
    const dbus_uint32_t flags = BUS_NAME_FLAGS;
    if (!dbus_message_append_args(call.get(), DBUS_TYPE_UINT32, &flags, DBUS_TYPE_INVALID)) {
        DAX_THROW(DBUSWrapperExceptions::DBUSMemoryError(), "A call of the bus cannot be made.");
    }
    m_calls.send(m_connection, std::move(call), [this](DBusMessage& answer) { receiveClaim(answer); });
    m_state = State::CLAIMING;
}

void BusName::receiveClaim(DBusMessage& answer) {
    dbus_uint32_t result = 0;
    dbus_message_get_args(&answer, nullptr, DBUS_TYPE_UINT32, &result, DBUS_TYPE_INVALID);
    if (result == DBUS_REQUEST_NAME_REPLY_PRIMARY_OWNER || result == DBUS_REQUEST_NAME_REPLY_ALREADY_OWNER) {
        m_state = State::HELD;
        return;
    }
    DAX_LOG(INF) << "Another connection has the name {" << m_name << "} by now.";
    m_state = State::GONE;
}

} // namespace DAX::Common::DBUSWrapper
