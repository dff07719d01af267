#include "Platform/SystemAPI/TimerUtilsSystemAPI/BootClockInitializer.h"

#include <bootclock.h>

#include "Common/Logging/LoggingStream.h"

namespace DAX::Platform {

BootClockInitializer::BootClockInitializer() {
    if (bootclock_init() != 0) {
        DAX_LOG(ERR) << "bootclock_init failed";
    }
}

BootClockInitializer::~BootClockInitializer() {
    bootclock_fini();
}

} // namespace DAX::Platform
