#include "Platform/OperatingSystem/SignalThread.h"

#include <cerrno>
#include <cstdint>
#include <iterator>

#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
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

int checked(int descriptor) {
    if (descriptor < 0) {
        DAX_THROW(Common::Utils::GenericException(), "Cannot wait for signals:" << Common::Utils::errinfo_errno(errno));
    }
    return descriptor;
}

// What the kernel does with a signal that it delivers, but outside the context of a signal.
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

// Delivers what comes, until the event does.
void run(int signalSource, int stopEvent) {
    pthread_setname_np(pthread_self(), "signals");
    pollfd sources[] = {{stopEvent, POLLIN, 0}, {signalSource, POLLIN, 0}};
    while (sources[0].revents == 0) {
        if (poll(sources, std::size(sources), -1) < 0) {
            continue;
        }
        signalfd_siginfo info{};
        if (sources[1].revents != 0 && read(signalSource, &info, sizeof(info)) == sizeof(info)) {
            deliver(static_cast<int>(info.ssi_signo));
        }
    }
}

} // namespace

SignalThread::SignalThread() {
    const sigset_t signals = handledSignals();
    m_stopEvent = checked(eventfd(0, EFD_CLOEXEC));
    m_signalSource = checked(signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK));
    pthread_sigmask(SIG_BLOCK, &signals, &m_previousMask);
    m_thread = boost::thread([source = m_signalSource, event = m_stopEvent] { run(source, event); });
}

SignalThread::~SignalThread() {
    const std::uint64_t one = 1;
    if (write(m_stopEvent, &one, sizeof(one)) == sizeof(one)) {
        const boost::this_thread::disable_interruption uninterrupted;
        m_thread.join();
    }
    close(m_signalSource);
    close(m_stopEvent);
    pthread_sigmask(SIG_SETMASK, &m_previousMask, nullptr);
}

} // namespace Platform
} // namespace DAX
