#pragma once

#include <csignal>

#include <boost/thread/thread.hpp>

namespace DAX {
namespace Platform {

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
    // The signals are held back from the thread that makes it, while it lives.
    class HeldBackSignals {
    public:
        HeldBackSignals();
        HeldBackSignals(const HeldBackSignals&) = delete;
        HeldBackSignals& operator=(const HeldBackSignals&) = delete;
        ~HeldBackSignals();

    private:
        sigset_t m_previousMask;
    };

    // Closed at its end.
    class Descriptor {
    public:
        // Throws GenericException for what the system gives instead of a descriptor.
        explicit Descriptor(int descriptor);
        Descriptor(const Descriptor&) = delete;
        Descriptor& operator=(const Descriptor&) = delete;
        ~Descriptor();

        int get() const { return m_descriptor; }

    private:
        int m_descriptor;
    };

    HeldBackSignals m_heldBack;
    Descriptor m_stopEvent;
    Descriptor m_signalSource;
    boost::thread m_thread;
};

} // namespace Platform
} // namespace DAX
