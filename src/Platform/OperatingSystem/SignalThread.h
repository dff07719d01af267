#pragma once

#include <boost/thread/thread_only.hpp>

#include "Utility/Utils/BlockedSignals.h"
#include "Utility/Utils/FileDescriptor.h"

namespace DAX::Platform {

// The one thread of the process on which the handlers of SIGTERM and SIGINT run. It waits for the signals and calls the
// handlers as ordinary functions, so that a handler may log and take locks without interrupting anybody.
//
// Make it before there are other threads: the signals are blocked on the thread that makes it and on those that are
// started later. Destroy it on the same thread: that ends the thread and unblocks the signals. The constructor throws
// GenericException when there are no descriptors left and boost::thread_resource_error when there can be no thread; the
// signals are not blocked then.
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
