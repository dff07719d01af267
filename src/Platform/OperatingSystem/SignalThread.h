#pragma once

#include <csignal>

#include <boost/thread/thread.hpp>

namespace DAX {
namespace Platform {

// The one thread of the process on which the handlers of SIGTERM and SIGINT run. It waits for the signals and calls the
// handlers as functions: one that logs and locks interrupts nobody, and is in no signal's context.
//
// Made before there are other threads: the signals are held back from the thread that makes it and from those that come
// after. The destructor ends the thread and lets the signals through again.
class SignalThread {
public:
    SignalThread();
    SignalThread(const SignalThread&) = delete;
    SignalThread& operator=(const SignalThread&) = delete;
    ~SignalThread();

private:
    sigset_t m_previousMask;
    int m_stopEvent;
    int m_signalSource;
    boost::thread m_thread;
};

} // namespace Platform
} // namespace DAX
