#include "Common/Logging/Logging.h"

namespace DAX::Common::Logging {

// Stubs: the socket is never opened, and nothing is sent.

void LoggingClass::socketConnectionInitialize() {}

int LoggingClass::socketSendData(const char*, int) {
    return 0;
}

int LoggingClass::socketRecvData(char*, int) {
    return 0;
}

void LoggingClass::sendSocketLog(const char*) {}

} // namespace DAX::Common::Logging
