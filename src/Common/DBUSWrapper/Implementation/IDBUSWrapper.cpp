#include "Common/DBUSWrapper/IDBUSWrapper.h"

#include <dbus/dbus.h>

namespace DAX::Common::DBUSWrapper {

const char REPLY_MESSAGE_TYPE_REPLY_STRING[] = "REPLY";
const char REPLY_MESSAGE_TYPE_EXCEPTION_STRING[] = "EXCEPTION";

void IDBUSWrapper::initialize() {
    dbus_threads_init_default();
}

} // namespace DAX::Common::DBUSWrapper
