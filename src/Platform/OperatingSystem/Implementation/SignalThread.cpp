#include "Platform/OperatingSystem/SignalThread.h"

#include <cerrno>
#include <cstdint>

#include <pthread.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include "Utility/Utils/ErrInfoStream.h"
#include "Utility/Utils/GenericException.h"

namespace DAX {
namespace Platform {

namespace {

sigset_t handledSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    return signals;
}

int makeEvent() {
    const int event = eventfd(0, EFD_CLOEXEC);
    if (event < 0) {
        DAX_THROW(Common::Utils::GenericException(), "Cannot make an event:" << Common::Utils::errinfo_errno(errno));
    }
    return event;
}

// Waits in the kernel for the event; signals are handled meanwhile.
void waitFor(int event) {
    const sigset_t signals = handledSignals();
    pthread_setname_np(pthread_self(), "signals");
    pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
    std::uint64_t count = 0;
    while (read(event, &count, sizeof(count)) < 0 && errno == EINTR) {
    }
}

} // namespace

SignalThread::SignalThread() : m_stopEvent(makeEvent()) {
    const sigset_t signals = handledSignals();
    pthread_sigmask(SIG_BLOCK, &signals, &m_previousMask);
    m_thread = boost::thread([event = m_stopEvent] { waitFor(event); });
}

SignalThread::~SignalThread() {
    const std::uint64_t one = 1;
    if (write(m_stopEvent, &one, sizeof(one)) == sizeof(one)) {
        const boost::this_thread::disable_interruption uninterrupted;
        m_thread.join();
    }
    close(m_stopEvent);
    pthread_sigmask(SIG_SETMASK, &m_previousMask, nullptr);
}

} // namespace Platform
} // namespace DAX
