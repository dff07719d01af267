#pragma once

#include <string>

#include <dbus/dbus.h>

namespace DAX::Tests {

// Appends one value of the type with this signature, such as "a{sv}" or "y": numbers are 0, texts are empty, a file is
// /dev/null, a variant holds an empty array of bytes, and an array has one element.
void appendAnyValue(DBusMessage& message, const std::string& signature);

} // namespace DAX::Tests
