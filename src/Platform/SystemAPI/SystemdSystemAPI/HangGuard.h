#pragma once

namespace DAX::Platform {

// The heartbeat for the device's deadlock watchdog. Any thread may call.
namespace HangGuard {

// Registers the process: from now on the watchdog takes it for hung when no heartbeat comes for longer than `seconds`.
// Throws GenericException when the device refuses.
void initWatchdogTimer(int seconds);

// One heartbeat. Throws GenericException when the device refuses: a missed heartbeat must not go unnoticed.
void updateWatchdogTimer();

} // namespace HangGuard
} // namespace DAX::Platform
