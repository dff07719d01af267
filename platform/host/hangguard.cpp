#include "hangguard.h"

#include <cerrno>
#include <string>

#include <systemd/sd-daemon.h>

#include "Border.h"

namespace {

constexpr int FAILED = -1;
constexpr long MICROSECONDS = 1000000;

// Positive: sent. 0: there is no service manager to notify. Negative: failed.
int notify(const std::string& state) {
    return sd_notify(0, state.c_str());
}

} // namespace

int hangguard_register_watchdog_service(int seconds) {
    if (seconds <= 0) {
        return -EINVAL;
    }
    return KovanHost::atBorder(FAILED,
                               [&] { return notify("WATCHDOG_USEC=" + std::to_string(seconds * MICROSECONDS)); });
}

int hangguard_watchdog_notify() {
    return KovanHost::atBorder(FAILED, [] { return notify("WATCHDOG=1"); });
}
