#include "bootclock.h"

#include <ctime>

#include "Call.h"

using KovanStubs::answer;
using KovanStubs::works;

int bootclock_init() {
    return answer(__func__);
}

int bootclock_fini() {
    return answer(__func__);
}

// A time cannot tell a failure: without a clock it is 1970.
uint64_t BC_GetCurrentTime() {
    return works(__func__) ? static_cast<uint64_t>(std::time(nullptr)) : 0;
}

uint64_t BC_ConvertToUTCTime(uint64_t localTime) {
    return works(__func__) ? localTime : 0;
}
