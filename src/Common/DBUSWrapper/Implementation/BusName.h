#pragma once

#include <string>

#include <dbus/dbus.h>

#include "Common/DBUSWrapper/Implementation/BusCalls.h"

namespace DAX::Common::DBUSWrapper {

// The well-known name of a connection, and how to give it back without losing a call: the bus keeps the order, so
// whatever it sent under the name comes in before its answer to the release. Only for the adapter's loop.
class BusName {
public:
    // For a connection that owns the name.
    BusName(BusCalls& calls, DBusConnection* connection, const std::string& name);

    // Gives the name back. The name is gone when the bus has answered, unless keep() claims it again before.
    void release();

    // Claims the name again if it is being given back. It is still gone when another connection has taken it meanwhile.
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

// The DBUS_NAME_FLAG_... with which an adapter asks for its name.
extern const unsigned int BUS_NAME_FLAGS;

} // namespace DAX::Common::DBUSWrapper
