#include "Executables/DaemonHelpers/DaemonHelpers.h"

#include <mutex>

#include <boost/program_options.hpp>

#include "Common/Logging/LoggingStream.h"
#include "Platform/OperatingSystem/OSProcess.h"
#include "Platform/OperatingSystem/OSSignals.h"
#include "Platform/SystemAPI/SystemdSystemAPI/HangGuard.h"

namespace DAX::DaemonHelpers {

using Platform::NiceQuitHelper;

namespace {

const int WATCHDOG_PING_INTERVAL_IN_SECONDS = 10;

bool exitChecking() {
    const auto [pressed, key] = Platform::wasAnyKeyPressed(); // never on this platform; another may tell keys
    if (pressed && key == 'q') {
        return true;
    }
    const std::lock_guard<std::mutex> lock(NiceQuitHelper::s_mutex);
    return NiceQuitHelper::s_quitFlag;
}

void watchdogPinging() {
    Platform::HangGuard::updateWatchdogTimer();
}

} // namespace

std::function<bool()> getExitCheckingFunction() {
    return &exitChecking;
}

std::function<void()> getWatchdogPingingFunction() {
    return &watchdogPinging;
}

int getWatchdogPingInterval() {
    return WATCHDOG_PING_INTERVAL_IN_SECONDS;
}

int parseIdleTimeout(int argc, char** argv, unsigned int defaultTimeout) {
    namespace options = boost::program_options;
    options::options_description known("Program options");
    known.add_options()("idle-timeout", options::value<int>(),
                        "Quit the daemon after this amount of seconds of inactivity.");
    options::variables_map given;
    options::store(options::parse_command_line(argc, argv, known), given);
    options::notify(given);
    if (given.count("idle-timeout") == 0) {
        return static_cast<int>(defaultTimeout);
    }
    const int timeout = given["idle-timeout"].as<int>();
    DAX_LOG(INF) << "Idle timeout set to " << timeout;
    return timeout;
}

} // namespace DAX::DaemonHelpers
