#pragma once

namespace DAX::Platform {

// The heartbeat towards the device's deadlock watchdog. Both throw GenericException when the device refuses: a missed
// heartbeat must be seen.
namespace HangGuard {

// Registers the process as one that is taken for hung when it stays silent for longer than `seconds`.
void initWatchdogTimer(int seconds);

// The heartbeat.
void updateWatchdogTimer();

} // namespace HangGuard
} // namespace DAX::Platform
