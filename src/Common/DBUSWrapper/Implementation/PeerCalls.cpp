#include "Common/DBUSWrapper/Implementation/PeerCalls.h"

#include <memory>

#include "Common/DBUSWrapper/DBUSWrapperExceptions.h"
#include "Common/DBUSWrapper/Implementation/DBUSResources.h"
#include "Utility/Utils/ErrInfoStream.h"

namespace DAX::Common::DBUSWrapper {
namespace {

const char UNKNOWN_METHOD[] = "Unknown method invoked on org.freedesktop.DBus.Peer interface";

struct FreeText {
    void operator()(char* text) const { dbus_free(text); }
};

DBUSMessageHandle answerWithMachineId(DBusMessage* call) {
    DBUSError error;
    const std::unique_ptr<char, FreeText> id(dbus_try_get_local_machine_id(error.get()));
    if (id == nullptr) {
        return DBUSMessageHandle(dbus_message_new_error(call, DBUS_ERROR_FILE_NOT_FOUND, error.message()));
    }
    DBUSMessageHandle answer(dbus_message_new_method_return(call));
    const char* const text = id.get();
    if (answer != nullptr && !dbus_message_append_args(answer.get(), DBUS_TYPE_STRING, &text, DBUS_TYPE_INVALID)) {
        answer.reset();
    }
    return answer;
}

DBUSMessageHandle answerTo(DBusMessage* call) {
    if (dbus_message_is_method_call(call, DBUS_INTERFACE_PEER, "Ping")) {
        return DBUSMessageHandle(dbus_message_new_method_return(call));
    }
    if (dbus_message_is_method_call(call, DBUS_INTERFACE_PEER, "GetMachineId")) {
        return answerWithMachineId(call);
    }
    return DBUSMessageHandle(dbus_message_new_error(call, DBUS_ERROR_UNKNOWN_METHOD, UNKNOWN_METHOD));
}

// libdbus answers a call of these methods without an interface, too.
bool isPeerCall(DBusMessage* message) {
    return dbus_message_is_method_call(message, DBUS_INTERFACE_PEER, "Ping") ||
           dbus_message_is_method_call(message, DBUS_INTERFACE_PEER, "GetMachineId") ||
           dbus_message_has_interface(message, DBUS_INTERFACE_PEER);
}

} // namespace

void takePeerCalls(DBusConnection* connection) {
    dbus_connection_set_route_peer_messages(connection, true);
}

bool answerPeerCall(DBusConnection* connection, DBusMessage* message) {
    if (!isPeerCall(message)) {
        return false;
    }
    if (!wantsReply(message)) {
        return true;
    }
    const DBUSMessageHandle answer = answerTo(message);
    if (answer == nullptr || !dbus_connection_send(connection, answer.get(), nullptr)) {
        DAX_THROW(DBUSWrapperExceptions::DBUSMemoryError(), "A call of the peer interface cannot be answered.");
    }
    return true;
}

} // namespace DAX::Common::DBUSWrapper
