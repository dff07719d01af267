#pragma once

#include <mutex>

#include <boost/core/noncopyable.hpp>
#include <boost/thread/condition_variable.hpp>

namespace DAX::Platform {

// A signal handler that is in force while the object lives; the earlier one comes back after it. A signal that the
// process was started with ignored stays ignored.
class RegisterSignalHandler : private boost::noncopyable {
public:
    RegisterSignalHandler(int signum, void (*handler)(int));
    ~RegisterSignalHandler();

private:
    int m_signum;
    void (*m_previousHandler)(int);
};

// Turns SIGTERM and SIGINT into flags that the whole process shares, while the object lives. The third SIGTERM ends the
// process at once. The flags are never cleared.
class NiceQuitHelper : private boost::noncopyable {
public:
    NiceQuitHelper();

    // Runs on whichever thread the kernel picks.
    static void niceQuitSignalHandler(int signum);

    // Asks the process to stop, as a signal would. Any thread may call.
    static void setQuitFlag();

    // For a daemon without a loop of its own: handles the signals, registers the process at the watchdog and pings it
    // every 10 seconds, and returns when the quit flag is set. A failure of the ping sets the flag; one of the
    // registration is thrown.
    static void standardQuitLoopWithDaemonWatchdogSupport();

    static std::mutex s_mutex; // held for single accesses to the flags only, since the handler takes it too
    static boost::condition_variable_any s_condition; // wakes a thread that waits in the quit loop
    static bool s_quitFlag;                           // the daemon is to stop; guarded by s_mutex
    static bool s_sigTermFlag;                        // SIGTERM was received; guarded by s_mutex

private:
    RegisterSignalHandler m_sigTermHandler;
    RegisterSignalHandler m_sigIntHandler;
};

} // namespace DAX::Platform
