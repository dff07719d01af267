#include "Common/DBUSWrapper/Implementation/Replies.h"

#include <utility>

#include "Common/DBUSWrapper/DBUSWrapperExceptions.h"
#include "Common/DBUSWrapper/Implementation/ByteArrays.h"
#include "Utility/Utils/ErrInfoStream.h"

namespace DAX::Common::DBUSWrapper {
namespace {

using DBUSWrapperExceptions::DBUSMemoryError;
using DBUSWrapperExceptions::ERRORSendingReply;

DBUSMessageHandle newReply(DBusMessage* call, std::string_view kind, std::string_view name) {
    DBUSMessageHandle reply(dbus_message_new_method_return(call));
    if (reply == nullptr) {
        DAX_THROW(DBUSMemoryError(), "A reply cannot be made.");
    }
    DBusMessageIter arguments;
    dbus_message_iter_init_append(reply.get(), &arguments);
    appendByteArray(arguments, kind);
    appendByteArray(arguments, name);
    return reply;
}

// A copy with another receiver and serial, each in its old place of the header.
DBUSMessageHandle copyFor(const char* receiver, dbus_uint32_t serial, DBusMessage* begun) {
    DBUSMessageHandle reply(dbus_message_copy(begun));
    const bool isAddressed =
        reply != nullptr &&
        (dbus_message_has_destination(begun, receiver) || dbus_message_set_destination(reply.get(), receiver)) &&
        dbus_message_set_reply_serial(reply.get(), serial);
    if (!isAddressed) {
        DAX_THROW(DBUSMemoryError(), "A reply cannot be copied.");
    }
    return reply;
}

} // namespace

DBUSMessageHandle Replies::make(DBusMessage* call, std::string_view kind, std::string_view name,
                                std::string_view data) {
    DBUSMessageHandle reply = begin(call, kind, name);
    DBusMessageIter arguments;
    dbus_message_iter_init_append(reply.get(), &arguments);
    appendByteArray(arguments, data);
    return reply;
}

DBUSMessageHandle Replies::begin(DBusMessage* call, std::string_view kind, std::string_view name) {
    const char* const receiver = dbus_message_get_sender(call);
    if (receiver == nullptr) { // from a broken bus: the header of its reply has one field less
        return newReply(call, kind, name);
    }
    if (m_kind != kind || m_name != name) {
        DBUSMessageHandle reply = newReply(call, kind, name);
        m_begun.reset();
        m_kind = kind;
        m_name = name;
        return reply;
    }
    if (m_begun == nullptr) {
        m_begun = newReply(call, kind, name);
    }
    return copyFor(receiver, dbus_message_get_serial(call), m_begun.get());
}

DBUSMessageHandle textReply(DBusMessage* call, const std::string& text) {
    DBUSMessageHandle reply(dbus_message_new_method_return(call));
    if (reply == nullptr) {
        DAX_THROW(DBUSMemoryError(), "A reply cannot be made.");
    }
    const char* const data = text.c_str();
    if (!dbus_validate_utf8(data, nullptr) ||
        !dbus_message_append_args(reply.get(), DBUS_TYPE_STRING, &data, DBUS_TYPE_INVALID)) {
        DAX_THROW(ERRORSendingReply(), "A text cannot be appended.");
    }
    return reply;
}

} // namespace DAX::Common::DBUSWrapper
