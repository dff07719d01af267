#pragma once

// The device's system log.

#ifdef __cplusplus
extern "C" {
#endif

// Writes one message, printf-style, to the log `logId` (0 main, 2 system) under `tag`, with a priority from 2 (verbose)
// to 7 (fatal). A negative result means that the message was not taken. Any thread may call.
// NOLINTNEXTLINE(bugprone-reserved-identifier): the name is the device's
int __dlog_print(int logId, int priority, const char* tag, const char* format, ...)
    __attribute__((format(printf, 4, 5)));

#ifdef __cplusplus
}
#endif
