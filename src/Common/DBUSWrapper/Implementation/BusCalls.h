#pragma once

#include <functional>
#include <string>
#include <unordered_map>

#include <dbus/dbus.h>

#include "Common/DBUSWrapper/Implementation/DBUSResources.h"

namespace DAX::Common::DBUSWrapper {

// Calls of the bus's own methods that nobody waits for. An answer comes in among the other messages, behind all that
// the bus sent before it. Only for the thread that dispatches the connection.
class BusCalls {
public:
    using Answer = std::function<void(DBusMessage& answer)>;

    // A call of this method with its first argument; the caller appends the others. Throws DBUSMemoryError.
    static DBUSMessageHandle make(const char* method, const std::string& argument);

    // `onAnswer` gets the answer, which may be an error; nothing when the connection ends before. Throws
    // DBUSMemoryError.
    void send(DBusConnection* connection, DBUSMessageHandle call, Answer onAnswer);

    // Takes an answer out of the messages that come in. False when the message is none: nobody but the bus can answer.
    bool receive(DBusMessage* message);

    // Waits for no answer any more: the next connection counts anew.
    void clear() { m_open.clear(); }

private:
    std::unordered_map<dbus_uint32_t, Answer> m_open; // by the serial of the call
};

} // namespace DAX::Common::DBUSWrapper
