#pragma once

// The device's deadlock watchdog. A registered process that sends no heartbeat for longer than its limit is taken for
// hung.

#ifdef __cplusplus
extern "C" {
#endif

// Registers the calling process with a limit in seconds. Negative: failed.
int hangguard_register_watchdog_service(int seconds);

// One heartbeat. Negative: failed.
int hangguard_watchdog_notify(void);

#ifdef __cplusplus
}
#endif
