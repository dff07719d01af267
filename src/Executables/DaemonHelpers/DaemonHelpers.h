#pragma once

#include <functional>

namespace DAX::DaemonHelpers {

// The function returns true when the daemon is to stop. It may be called on any thread.
std::function<bool()> getExitCheckingFunction();

// The function pings the watchdog and throws GenericException when the watchdog refuses. It may be called on any
// thread.
std::function<void()> getWatchdogPingingFunction();

// In seconds.
int getWatchdogPingInterval();

// The value of the option --idle-timeout in seconds, unchecked, or `defaultTimeout` when the option is absent. Throws
// an exception of Boost.Program_options for an unknown option and for a value that is not an integer.
int parseIdleTimeout(int argc, char** argv, unsigned int defaultTimeout);

} // namespace DAX::DaemonHelpers
