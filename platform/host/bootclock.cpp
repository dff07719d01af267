#include "bootclock.h"

#include <ctime>

int bootclock_init() {
    return 0;
}

int bootclock_fini() {
    return 0;
}

uint64_t BC_GetCurrentTime() {
    const time_t now = std::time(nullptr);
    tm local{};
    tzset(); // without it, localtime_r would keep the zone of its first use
    localtime_r(&now, &local);
    return static_cast<uint64_t>(now + local.tm_gmtoff);
}

uint64_t BC_ConvertToUTCTime(uint64_t localTime) {
    const time_t wallClock = static_cast<time_t>(localTime);
    tm parts{};
    gmtime_r(&wallClock, &parts);
    parts.tm_isdst = -1;
    return static_cast<uint64_t>(std::mktime(&parts));
}
