#include <ctime>

#include <boost/date_time/posix_time/conversion.hpp>
#include <bootclock.h>

#include "Common/Logging/LoggingStream.h"
#include "Platform/SystemAPI/TimerUtilsSystemAPI/ITimeUtil.h"
#include "Platform/SystemAPI/TimerUtilsSystemAPI/TimeConversions.h"

namespace DAX::Platform {
namespace {

std::string format(std::uint64_t seconds, const char* form) {
    const std::tm parts = boost::posix_time::to_tm(TimeConversions::uint64_t_to_ptime(seconds));
    char text[64];
    return std::string(text, std::strftime(text, sizeof(text), form, &parts));
}

} // namespace

std::uint64_t ITimeUtil::getCurrentLocalTime() {
    const std::uint64_t now = BC_GetCurrentTime();
    DAX_LOG(INF) << "Current local time and date: " << now;
    return now;
}

std::string ITimeUtil::getCurrentLocalTimeToString() {
    return format(getCurrentLocalTime(), "%FT%T%z"); // the zone comes out empty, since to_tm() knows none
}

std::uint64_t ITimeUtil::getCurrentTime() {
    const std::uint64_t local = BC_GetCurrentTime();
    DAX_LOG(INF) << "Current local time and date [uint64_t]: " << local;
    DAX_LOG(INF) << "Current local date and time: " << format(local, "%F %T");
    const std::uint64_t utc = BC_ConvertToUTCTime(local);
    DAX_LOG(INF) << "Current UTC time and date [uint64_t]: " << utc;
    DAX_LOG(INF) << "Current UTC date and time: " << format(utc, "%F %T");
    return utc;
}

} // namespace DAX::Platform
