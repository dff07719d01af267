#pragma once

#include <boost/thread/thread.hpp>

#include "Utility/Utils/BlockedSignals.h"
#include "Utility/Utils/FileDescriptor.h"

namespace DAX::Platform {

// The one thread of the process on which the handlers of SIGTERM and SIGINT run. It waits for the signals and calls the
// handlers as functions: one that logs and locks interrupts nobody, and is in no signal's context.
//
// Made before there are other threads: the signals are held back from the thread that makes it and from those that come
// after. The destructor, on that same thread, ends the thread and lets the signals through again. Without descriptors
// or without a thread the constructor throws (GenericException, boost::thread_resource_error) and holds nothing back.
class SignalThread {
public:
    SignalThread();
    SignalThread(const SignalThread&) = delete;
    SignalThread& operator=(const SignalThread&) = delete;
    ~SignalThread();

private:
    Common::Utils::BlockedSignals m_heldBack; // from the thread that makes this
    Common::Utils::FileDescriptor m_stopEvent;
    Common::Utils::FileDescriptor m_signalSource;
    boost::thread m_thread;
};

} // namespace DAX::Platform
