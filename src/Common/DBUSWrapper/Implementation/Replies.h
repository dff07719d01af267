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
// for a short call. Calls of one method come in rows, as when a client asks for the progress. So the second reply of
// the same kind and name keeps what it begins with, and those after it are copies with another receiver. The bytes of a
// reply do not depend on what was kept.
class Replies {
public:
    // A reply to `call`. Throws DBUSMemoryError.
    DBUSMessageHandle make(DBusMessage* call, std::string_view kind, std::string_view name, std::string_view data);

private:
    DBUSMessageHandle begin(DBusMessage* call, std::string_view kind, std::string_view name);

    std::string m_kind;        // of the last reply
    std::string m_name;        // of the last reply
    DBUSMessageHandle m_begun; // a reply of that kind and name without its data; null until there are two in a row
};

// A reply to `call` that holds one string. Throws DBUSMemoryError, and ERRORSendingReply for a text that is not UTF-8.
DBUSMessageHandle textReply(DBusMessage* call, const std::string& text);

} // namespace DAX::Common::DBUSWrapper
