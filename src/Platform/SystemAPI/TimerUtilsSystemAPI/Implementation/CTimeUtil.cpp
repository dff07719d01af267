#include "Platform/SystemAPI/TimerUtilsSystemAPI/ITimeUtil.h"

#include <bootclock.h>

#include "Common/Logging/LoggingStream.h"

namespace DAX {
namespace Platform {

std::uint64_t ITimeUtil::getCurrentLocalTime() {
    const std::uint64_t now = BC_GetCurrentTime();
    DAX_LOG(INF) << "Current local time and date: " << now;
    return now;
}

} // namespace Platform
} // namespace DAX
