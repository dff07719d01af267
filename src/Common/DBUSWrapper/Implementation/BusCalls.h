#pragma once

#include <functional>
#include <string>
#include <unordered_map>

#include <dbus/dbus.h>

#include "Common/DBUSWrapper/Implementation/DBUSResources.h"

namespace DAX::Common::DBUSWrapper {

// Calls of the bus's own methods that nobody waits for. An answer comes in among the other messages, after all that the
// bus sent before it. Only for the thread that dispatches the connection.
class BusCalls {
public:
    using Answer = std::function<void(DBusMessage& answer)>;

    // A call of this method with its first argument; the caller appends the others. Throws DBUSMemoryError.
    static DBUSMessageHandle make(const char* method, const std::string& argument);

    // Sends a call of make(). `onAnswer` gets the answer, which may be an error; it is not called when the connection
    // ends before. Throws DBUSMemoryError.
    void send(DBusConnection* connection, DBUSMessageHandle call, Answer onAnswer);

    // Passes an answer of the bus to its `onAnswer`. Returns false when the message is no such answer.
    bool receive(DBusMessage* message);

    // Forgets all calls without an answer: the serials of the next connection start anew.
    void clear() { m_open.clear(); }

private:
    std::unordered_map<dbus_uint32_t, Answer> m_open; // by the serial of the call
};

} // namespace DAX::Common::DBUSWrapper
