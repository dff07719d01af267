#pragma once

#include <string>

#include <dbus/dbus.h>

#include "Common/DBUSWrapper/Implementation/BusCalls.h"

namespace DAX::Common::DBUSWrapper {

// The well-known name that a connection has, and how it is given back without losing a call: the bus keeps the order,
// so that whatever it sent here under the name comes in before its answer to the release. Only for the adapter's loop.
class BusName {
public:
    // For a connection that owns the name.
    BusName(BusCalls& calls, DBusConnection* connection, const std::string& name);

    // Gives the name back; it is gone when the bus has answered, unless it is claimed again before.
    void release();

    // Claims the name again if it is given back. It is gone all the same when another connection has it by then.
    void keep();

    bool isHeld() const { return m_state == State::HELD; }
    bool isGone() const { return m_state == State::GONE; }

private:
    enum class State { HELD, RELEASING, CLAIMING, GONE };

    void receiveRelease();
    void receiveClaim(DBusMessage& answer);

    BusCalls& m_calls;
    DBusConnection* m_connection;
    std::string m_name;
    State m_state = State::HELD;
};

// How an adapter asks for a name: DBUS_NAME_FLAG_....
extern const unsigned int BUS_NAME_FLAGS;

} // namespace DAX::Common::DBUSWrapper
