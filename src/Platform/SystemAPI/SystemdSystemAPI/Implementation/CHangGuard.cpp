#include <hangguard.h>

#include "Common/Logging/LoggingStream.h"
#include "Platform/SystemAPI/SystemdSystemAPI/HangGuard.h"
#include "Utility/Utils/ErrInfoStream.h"
#include "Utility/Utils/GenericException.h"

namespace DAX::Platform::HangGuard {

using Common::Utils::GenericException;

void initWatchdogTimer(int seconds) {
    const int result = hangguard_register_watchdog_service(seconds);
    if (result < 0) {
        DAX_LOG(ERR) << "Initializing Watchdog status failed with error code: " << result;
        DAX_THROW(GenericException(), "Initializing Watchdog status failed with error code:" << result);
    }
    DAX_LOG(DBG) << "Initialization of Watchdog status successfully sent with result: " << result;
}

void updateWatchdogTimer() {
    const int result = hangguard_watchdog_notify();
    if (result < 0) {
        DAX_LOG(ERR) << "Updating Watchdog status failed with error code: " << result;
        DAX_THROW(GenericException(), "Updating Watchdog failed with error code:" << result);
    }
    DAX_LOG(DBG) << "Update of Watchdog status successfully sent with result: " << result;
}

} // namespace DAX::Platform::HangGuard
