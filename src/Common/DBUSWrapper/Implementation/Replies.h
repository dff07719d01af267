#pragma once

#include <string>
#include <string_view>

#include <dbus/dbus.h>

#include "Common/DBUSWrapper/Implementation/DBUSResources.h"

namespace DAX::Common::DBUSWrapper {

// Makes the replies to method calls: three byte arrays, which are the kind of the reply, the name of the function or of
// the exception, and the data. One thread at a time.
//
// libdbus writes the signature into the header anew for each argument, which takes longer than all that the daemon does
// for a short call. Calls of one method come in rows, as when a client asks for the progress. So what the last reply
// began with is kept, and the next one of the same kind and name is a copy with another receiver. The bytes of a reply
// do not depend on what was kept.
class Replies {
public:
    // A reply to `call`. Throws DBUSMemoryError.
    DBUSMessageHandle make(DBusMessage* call, std::string_view kind, std::string_view name, std::string_view data);

private:
    DBUSMessageHandle begin(DBusMessage* call, std::string_view kind, std::string_view name);

    DBUSMessageHandle m_begun; // the last reply without its data; null before the first
    std::string m_kind;        // of m_begun
    std::string m_name;        // of m_begun
};

// A reply to `call` that holds one string. Throws DBUSMemoryError, and ERRORSendingReply for a text that is not UTF-8.
DBUSMessageHandle textReply(DBusMessage* call, const std::string& text);

} // namespace DAX::Common::DBUSWrapper
