#include "monitor/BusMessage.h"

#include <algorithm>

#include "monitor/Implementation/LibDBus.h"

namespace monitor {

namespace {

std::string orEmpty(const char* text) {
    return text != nullptr ? text : "";
}

BusMessage::Type typeOf(DBusMessage& message) {
    switch (dbus_message_get_type(&message)) {
    case DBUS_MESSAGE_TYPE_METHOD_CALL:
        return BusMessage::Type::CALL;
    case DBUS_MESSAGE_TYPE_METHOD_RETURN:
        return BusMessage::Type::REPLY;
    case DBUS_MESSAGE_TYPE_ERROR:
        return BusMessage::Type::ERROR;
    case DBUS_MESSAGE_TYPE_SIGNAL:
        return BusMessage::Type::SIGNAL;
    default:
        return BusMessage::Type::OTHER;
    }
}

BusArgument readBytes(DBusMessageIter& iterator) {
    DBusMessageIter elements;
    dbus_message_iter_recurse(&iterator, &elements);
    const char* bytes = nullptr;
    int count = 0;
    dbus_message_iter_get_fixed_array(&elements, &bytes, &count);
    return {'b', std::string(bytes, static_cast<std::size_t>(count)), 0};
}

BusArgument readArgument(DBusMessageIter& iterator) {
    switch (dbus_message_iter_get_arg_type(&iterator)) {
    case DBUS_TYPE_STRING: {
        const char* text = nullptr;
        dbus_message_iter_get_basic(&iterator, &text);
        return {'s', text, 0};
    }
    case DBUS_TYPE_UINT32: {
        dbus_uint32_t number = 0;
        dbus_message_iter_get_basic(&iterator, &number);
        return {'u', {}, number};
    }
    case DBUS_TYPE_ARRAY:
        return dbus_message_iter_get_element_type(&iterator) == DBUS_TYPE_BYTE ? readBytes(iterator) : BusArgument();
    default:
        return {};
    }
}

} // namespace

BusMessage libdbus::read(DBusMessage& message, std::int64_t time) {
    BusMessage result;
    result.type = typeOf(message);
    result.time = time;
    result.serial = dbus_message_get_serial(&message);
    result.replySerial = dbus_message_get_reply_serial(&message);
    result.expectsReply = !dbus_message_get_no_reply(&message);
    result.sender = orEmpty(dbus_message_get_sender(&message));
    result.destination = orEmpty(dbus_message_get_destination(&message));
    result.path = orEmpty(dbus_message_get_path(&message));
    result.interface = orEmpty(dbus_message_get_interface(&message));
    result.member = orEmpty(dbus_message_get_member(&message));
    result.error = orEmpty(dbus_message_get_error_name(&message));
    DBusMessageIter iterator;
    const std::size_t most = 4; // no message that matters has more
    for (bool more = dbus_message_iter_init(&message, &iterator); more && result.arguments.size() < most;
         more = dbus_message_iter_next(&iterator)) {
        result.arguments.push_back(readArgument(iterator));
    }
    return result;
}

std::optional<BusMessage> parseMessage(std::string_view bytes, std::int64_t time, std::string& reason) {
    const int size = static_cast<int>(std::min<std::size_t>(bytes.size(), DBUS_MAXIMUM_MESSAGE_LENGTH + 1));
    // The library would call a part of a message a lack of memory.
    const int needed = dbus_message_demarshal_bytes_needed(bytes.data(), size);
    if (needed == 0 || needed > size) {
        reason = std::to_string(bytes.size()) + " bytes of a message" +
                 (needed == 0 ? "" : " that has " + std::to_string(needed));
        return std::nullopt;
    }
    libdbus::Error error;
    const libdbus::Message message(dbus_message_demarshal(bytes.data(), size, error.get()));
    if (!message) {
        reason = error.text();
        return std::nullopt;
    }
    return libdbus::read(*message, time);
}

} // namespace monitor
