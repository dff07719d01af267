#include "Common/Logging/Logging.h"

namespace DAX::Common::Logging {

// Nothing goes through a socket: the channel is never opened.

void LoggingClass::socketConnectionInitialize() {}

int LoggingClass::socketSendData(const char*, int) {
    return 0;
}

int LoggingClass::socketRecvData(char*, int) {
    return 0;
}

void LoggingClass::sendSocketLog(const char*) {}

} // namespace DAX::Common::Logging
