#include "AnyValue.h"

#include <cstdint>
#include <stdexcept>

#include <fcntl.h>
#include <unistd.h>

namespace DAX::Tests {
namespace {

void append(DBusMessageIter& values, DBusSignatureIter type);

void appendText(DBusMessageIter& values, int type) {
    const char* const text = type == DBUS_TYPE_OBJECT_PATH ? "/" : "";
    dbus_message_iter_append_basic(&values, type, &text);
}

void appendFile(DBusMessageIter& values) {
    const int file = open("/dev/null", O_RDONLY | O_CLOEXEC);
    const bool appended = dbus_message_iter_append_basic(&values, DBUS_TYPE_UNIX_FD, &file);
    close(file);
    if (!appended) {
        throw std::runtime_error("the bus carries no files");
    }
}

void appendBasic(DBusMessageIter& values, int type) {
    if (type == DBUS_TYPE_STRING || type == DBUS_TYPE_OBJECT_PATH || type == DBUS_TYPE_SIGNATURE) {
        appendText(values, type);
    } else if (type == DBUS_TYPE_UNIX_FD) {
        appendFile(values);
    } else {
        const std::uint64_t zero = 0; // as wide as the widest
        dbus_message_iter_append_basic(&values, type, &zero);
    }
}

void appendContainer(DBusMessageIter& values, int type, DBusSignatureIter signature) {
    DBusSignatureIter inner;
    if (type == DBUS_TYPE_VARIANT) {
        dbus_signature_iter_init(&inner, "ay");
    } else {
        dbus_signature_iter_recurse(&signature, &inner);
    }
    char* const contained = dbus_signature_iter_get_signature(&inner);
    DBusMessageIter elements;
    dbus_message_iter_open_container(
        &values, type, type == DBUS_TYPE_ARRAY || type == DBUS_TYPE_VARIANT ? contained : nullptr, &elements);
    dbus_free(contained);
    do {
        append(elements, inner);
    } while (dbus_signature_iter_next(&inner));
    dbus_message_iter_close_container(&values, &elements);
}

void append(DBusMessageIter& values, DBusSignatureIter signature) {
    const int type = dbus_signature_iter_get_current_type(&signature);
    if (dbus_type_is_basic(type)) {
        appendBasic(values, type);
    } else {
        appendContainer(values, type, signature);
    }
}

} // namespace

void appendAnyValue(DBusMessage& message, const std::string& signature) {
    DBusSignatureIter type;
    dbus_signature_iter_init(&type, signature.c_str());
    DBusMessageIter values;
    dbus_message_iter_init_append(&message, &values);
    append(values, type);
}

} // namespace DAX::Tests
