#include "Platform/OperatingSystem/OSSignals.h"

#include <atomic>
#include <csignal>
#include <iostream>

#include <boost/chrono/system_clocks.hpp>
#include <boost/exception/diagnostic_information.hpp>

#include "Common/Logging/LoggingStream.h"
#include "Platform/OperatingSystem/OSProcess.h"
#include "Platform/SystemAPI/SystemdSystemAPI/HangGuard.h"

namespace DAX::Platform {
namespace {

const int WATCHDOG_LIMIT_IN_SECONDS = 300;
const boost::chrono::seconds PING_INTERVAL(10);

bool isQuitFlagSet() {
    const std::lock_guard<std::mutex> lock(NiceQuitHelper::s_mutex);
    return NiceQuitHelper::s_quitFlag;
}

void sayOnConsole(const char* text) {
    std::cout << text << std::endl;
}

void waitForQuitFlag() {
    std::unique_lock<std::mutex> lock(NiceQuitHelper::s_mutex);
    NiceQuitHelper::s_condition.wait_until(lock, boost::chrono::steady_clock::now() + PING_INTERVAL,
                                           [] { return NiceQuitHelper::s_quitFlag; });
}

} // namespace

RegisterSignalHandler::RegisterSignalHandler(int signum, void (*handler)(int)) : m_signum(signum) {
    DAX_LOG(INF) << "Registering signal (signum: " << signum << ")";
    m_previousHandler = std::signal(signum, handler);
    if (m_previousHandler == SIG_IGN) {
        DAX_LOG(WRN) << "Ignoring signal " << signum;
        std::signal(signum, SIG_IGN);
    }
}

RegisterSignalHandler::~RegisterSignalHandler() {
    std::signal(m_signum, m_previousHandler);
}

std::mutex NiceQuitHelper::s_mutex;
boost::condition_variable_any NiceQuitHelper::s_condition;
bool NiceQuitHelper::s_quitFlag = false;
bool NiceQuitHelper::s_sigTermFlag = false;

NiceQuitHelper::NiceQuitHelper()
    : m_sigTermHandler(SIGTERM, &niceQuitSignalHandler), m_sigIntHandler(SIGINT, &niceQuitSignalHandler) {}

void NiceQuitHelper::niceQuitSignalHandler(int signum) {
    static std::atomic<int> s_term_count{0}; // atomic, since forcing the exit must not wait for a lock
    std::cout << "Signal received, quitting... (signum: " << signum << ")" << std::endl;
    DAX_LOG(INF) << "Signal received, quitting... (signum: " << signum << ")";
    if (signum == SIGTERM) {
        if (s_term_count.fetch_add(1) > 1) {
            DAX_LOG(FTL) << "Received subsequent SIGTERM, forcing exit.";
            callExit();
        }
        DAX_LOG(INF) << "Setting s_sigTermFlag true.";
        const std::lock_guard<std::mutex> lock(s_mutex);
        s_sigTermFlag = true;
    }
    setQuitFlag();
}

void NiceQuitHelper::setQuitFlag() {
    {
        const std::lock_guard<std::mutex> lock(s_mutex);
        s_quitFlag = true;
    }
    s_condition.notify_all();
}

void NiceQuitHelper::standardQuitLoopWithDaemonWatchdogSupport() {
    const NiceQuitHelper handlers;
    if (!isQuitFlagSet()) {
        DAX_LOG(INF) << "Send SIGINT or SIGTERM to quit.";
        sayOnConsole("Send SIGINT or SIGTERM to quit.");
    }
    HangGuard::initWatchdogTimer(WATCHDOG_LIMIT_IN_SECONDS); // not in the loop's try block: unwatched, it must not run
    while (!isQuitFlagSet()) {
        try {
            HangGuard::updateWatchdogTimer();
            waitForQuitFlag();
        } catch (...) {
            DAX_LOG(ERR) << "Exception caught in standardQuitLoopWithDaemonWatchdogSupport(): "
                         << boost::current_exception_diagnostic_information(true);
            setQuitFlag();
        }
    }
    DAX_LOG(INF) << "standardQuitLoop done.";
    sayOnConsole("standardQuitLoop done.");
}

} // namespace DAX::Platform
