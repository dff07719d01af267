#pragma once

#include <functional>

namespace DAX::DaemonHelpers {

// True when the daemon is to stop.
std::function<bool()> getExitCheckingFunction();

// Pings the watchdog; throws GenericException when it refuses.
std::function<void()> getWatchdogPingingFunction();

// In seconds.
int getWatchdogPingInterval();

// The value of the option --idle-timeout, in seconds, or `defaultTimeout` when it is absent. Throws an exception of
// Boost.Program_options for an unknown option and for a value that is no integer.
int parseIdleTimeout(int argc, char** argv, unsigned int defaultTimeout);

} // namespace DAX::DaemonHelpers
