#pragma once

#include <stdint.h>

// The device's clock. Times are counts of seconds.

#ifdef __cplusplus
extern "C" {
#endif

// Must have succeeded, with 0, before BC_GetCurrentTime is called.
int bootclock_init(void);
int bootclock_fini(void);

// The device's local time, in seconds since 1970-01-01 00:00:00 local time.
uint64_t BC_GetCurrentTime(void);

// Converts such a local time to UTC.
uint64_t BC_ConvertToUTCTime(uint64_t localTime);

#ifdef __cplusplus
}
#endif
