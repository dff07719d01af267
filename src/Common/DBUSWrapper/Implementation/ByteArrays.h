#pragma once

#include <string_view>

#include <boost/optional.hpp>
#include <dbus/dbus.h>

namespace DAX::Common::DBUSWrapper {

// Appends one argument of type `ay`. Throws DBUSMemoryError.
void appendByteArray(DBusMessageIter& arguments, std::string_view bytes);

// The bytes of the argument at the iterator; they live as long as the message. Empty when the argument is not of type
// `ay`.
boost::optional<std::string_view> readByteArray(DBusMessageIter& argument);

} // namespace DAX::Common::DBUSWrapper
