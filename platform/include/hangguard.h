#pragma once

// The device's deadlock watchdog: a registered process that stays silent for longer than it said is taken for hung.

#ifdef __cplusplus
extern "C" {
#endif

// Registers the calling process with a limit in seconds. Negative: failed.
int hangguard_register_watchdog_service(int seconds);

// The heartbeat. Negative: failed.
int hangguard_watchdog_notify(void);

#ifdef __cplusplus
}
#endif
