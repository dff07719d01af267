#pragma once

#include <mutex>

#include <boost/core/noncopyable.hpp>
#include <boost/thread/condition_variable.hpp>

namespace DAX::Platform {

// A signal handler that is in force while the object lives; the destructor restores the earlier one. A signal that was
// ignored before stays ignored. The disposition of a signal belongs to the whole process: nest such objects, and make
// and destroy them on one thread.
class RegisterSignalHandler : private boost::noncopyable {
public:
    RegisterSignalHandler(int signum, void (*handler)(int));
    ~RegisterSignalHandler();

private:
    int m_signum;
    void (*m_previousHandler)(int);
};

// Turns SIGTERM and SIGINT into flags that the whole process shares, while the object lives. The third SIGTERM ends the
// process at once (see callExit). The flags are never cleared.
class NiceQuitHelper : private boost::noncopyable {
public:
    NiceQuitHelper();

    // The handler of both signals. It takes locks and writes the log, so it must not interrupt a thread that does the
    // same: while a SignalThread exists it runs there, as an ordinary function. Otherwise it runs in the context of the
    // signal, on a thread that the kernel picks.
    static void niceQuitSignalHandler(int signum);

    // Asks the process to stop, as SIGINT would. Any thread may call.
    static void setQuitFlag();

    // For a daemon without a loop of its own: handles the signals, registers the process with the watchdog, pings it
    // every 10 seconds, and returns when the quit flag is set. A ping that fails is logged and sets the flag. Throws
    // GenericException when the watchdog refuses the registration.
    static void standardQuitLoopWithDaemonWatchdogSupport();

    static std::mutex s_mutex; // hold it for one access to the flags only, since the handler takes it too
    static boost::condition_variable_any s_condition; // wakes a thread that waits in the quit loop
    static bool s_quitFlag;                           // the daemon is to stop; guarded by s_mutex
    static bool s_sigTermFlag;                        // SIGTERM was received; guarded by s_mutex

private:
    RegisterSignalHandler m_sigTermHandler;
    RegisterSignalHandler m_sigIntHandler;
};

} // namespace DAX::Platform
