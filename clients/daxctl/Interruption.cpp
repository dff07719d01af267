#include "daxctl/Interruption.h"

#include <ctime>
#include <initializer_list>

namespace daxctl {

namespace {

bool isIgnored(int signal) {
    struct sigaction action;
    sigaction(signal, nullptr, &action);
    return action.sa_handler == SIG_IGN;
}

sigset_t signalsToHold() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        if (!isIgnored(signal)) {
            sigaddset(&signals, signal);
        }
    }
    return signals;
}

} // namespace

Interruption::Interruption() : m_signals(signalsToHold()) {
    pthread_sigmask(SIG_BLOCK, &m_signals, nullptr);
}

Interruption::~Interruption() {
    pthread_sigmask(SIG_UNBLOCK, &m_signals, nullptr);
}

bool Interruption::wait(std::chrono::milliseconds time) {
    if (!m_requested) {
        const timespec limit{time.count() / 1000, (time.count() % 1000) * 1000000};
        m_requested = sigtimedwait(&m_signals, nullptr, &limit) > 0;
    }
    return m_requested;
}

} // namespace daxctl
