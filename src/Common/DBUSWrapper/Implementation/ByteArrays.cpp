#include "Common/DBUSWrapper/Implementation/ByteArrays.h"

#include "Common/DBUSWrapper/DBUSWrapperExceptions.h"
#include "Utility/Utils/ErrInfoStream.h"

namespace DAX::Common::DBUSWrapper {
namespace {

using DBUSWrapperExceptions::DBUSMemoryError;

// libdbus ends the process if more is appended than an array can hold.
bool appendBytes(DBusMessageIter& array, std::string_view bytes) {
    if (bytes.empty()) {
        return true;
    }
    const char* data = bytes.data();
    return bytes.size() <= DBUS_MAXIMUM_ARRAY_LENGTH &&
           dbus_message_iter_append_fixed_array(&array, DBUS_TYPE_BYTE, &data, static_cast<int>(bytes.size()));
}

} // namespace

void appendByteArray(DBusMessageIter& arguments, std::string_view bytes) {
    DBusMessageIter array;
    if (!dbus_message_iter_open_container(&arguments, DBUS_TYPE_ARRAY, DBUS_TYPE_BYTE_AS_STRING, &array)) {
        DAX_THROW(DBUSMemoryError(), "A byte array cannot be opened.");
    }
    if (!appendBytes(array, bytes)) {
        dbus_message_iter_abandon_container(&arguments, &array);
        DAX_THROW(DBUSMemoryError(), "A byte array of " << bytes.size() << " bytes cannot be appended.");
    }
    if (!dbus_message_iter_close_container(&arguments, &array)) {
        DAX_THROW(DBUSMemoryError(), "A byte array cannot be closed.");
    }
}

boost::optional<std::string_view> readByteArray(DBusMessageIter& argument) {
    if (dbus_message_iter_get_arg_type(&argument) != DBUS_TYPE_ARRAY ||
        dbus_message_iter_get_element_type(&argument) != DBUS_TYPE_BYTE) {
        return boost::none;
    }
    DBusMessageIter array;
    dbus_message_iter_recurse(&argument, &array);
    const char* bytes = nullptr;
    int count = 0;
    dbus_message_iter_get_fixed_array(&array, &bytes, &count);
    return std::string_view(bytes, static_cast<std::size_t>(count));
}

} // namespace DAX::Common::DBUSWrapper
