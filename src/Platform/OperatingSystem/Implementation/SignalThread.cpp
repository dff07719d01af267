#include "Platform/OperatingSystem/SignalThread.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <iterator>
#include <thread>

#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include "Common/Logging/LoggingStream.h"
#include "Utility/Utils/ErrInfoStream.h"
#include "Utility/Utils/GenericException.h"

namespace DAX::Platform {

using Common::Utils::FileDescriptor;

namespace {

sigset_t handledSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    return signals;
}

// Owns a descriptor that the system has just returned; throws when it returned none.
FileDescriptor owned(int descriptor) {
    const int error = errno; // before anything else can change it
    if (descriptor < 0) {
        DAX_THROW(Common::Utils::GenericException(),
                  "Cannot wait for signals:" << Common::Utils::get_string_from_errno(error));
    }
    return FileDescriptor(descriptor);
}

FileDescriptor signalSource() {
    const sigset_t signals = handledSignals();
    return owned(signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK));
}

// Does what the kernel does when it delivers a signal, but outside the context of a signal.
void deliver(int signum) {
    struct sigaction action {};
    sigaction(signum, nullptr, &action);
    if (action.sa_handler == SIG_DFL) {
        const sigset_t signals = handledSignals();
        pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
        pthread_kill(pthread_self(), signum);
        pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    } else if (action.sa_handler != SIG_IGN) {
        action.sa_handler(signum);
    }
}

// Whether the counter of the event has been raised.
bool hasHappened(int event) {
    std::uint64_t count = 0;
    return read(event, &count, sizeof(count)) == sizeof(count);
}

void deliverAll(int signalSource) {
    signalfd_siginfo info{};
    while (read(signalSource, &info, sizeof(info)) == sizeof(info)) {
        deliver(static_cast<int>(info.ssi_signo));
    }
}

// Waits until there is something to read. A wait that fails is logged once, and each failing wait takes a pause
// instead: the process must still be able to stop, and the thread must not spin.
class Waiting {
public:
    Waiting(int event, int signalSource) : m_sources{{event, POLLIN, 0}, {signalSource, POLLIN, 0}} {}

    void wait() {
        if (const int error = failure()) {
            logOnce(error);
            std::this_thread::sleep_for(PAUSE);
        }
    }

private:
    // The error, or 0.
    int failure() {
        if (poll(m_sources, std::size(m_sources), -1) < 0) {
            return errno == EINTR ? 0 : errno;
        }
        const bool isReadable = std::all_of(std::begin(m_sources), std::end(m_sources),
                                            [](const pollfd& source) { return (source.revents & ~POLLIN) == 0; });
        return isReadable ? 0 : EBADF;
    }

    void logOnce(int error) {
        if (!m_logged) {
            DAX_LOG(ERR) << "Cannot wait for signals:" << Common::Utils::get_string_from_errno(error)
                         << ". They are looked for every " << PAUSE.count() << " ms.";
            m_logged = true;
        }
    }

    static constexpr std::chrono::milliseconds PAUSE{100};

    pollfd m_sources[2];
    bool m_logged = false;
};

// Delivers the signals that arrive, until the event is raised.
void run(int signalSource, int stopEvent) {
    pthread_setname_np(pthread_self(), "signals");
    Waiting waiting(stopEvent, signalSource);
    do {
        waiting.wait();
        deliverAll(signalSource);
    } while (!hasHappened(stopEvent));
}

} // namespace

SignalThread::SignalThread()
    : m_heldBack(handledSignals())
    , m_stopEvent(owned(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)))
    , m_signalSource(signalSource()) {
    m_thread = boost::thread([source = m_signalSource.get(), event = m_stopEvent.get()] { run(source, event); });
}

SignalThread::~SignalThread() {
    const std::uint64_t one = 1;
    if (write(m_stopEvent.get(), &one, sizeof(one)) == sizeof(one)) {
        const boost::this_thread::disable_interruption uninterrupted;
        m_thread.join();
    }
}

} // namespace DAX::Platform
