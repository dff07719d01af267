#include "daxctl/Interruption.h"

#include <csignal>
#include <ctime>

namespace daxctl {

namespace {

sigset_t heldSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    return signals;
}

} // namespace

Interruption::Interruption() {
    const sigset_t signals = heldSignals();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

Interruption::~Interruption() {
    const sigset_t signals = heldSignals();
    pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
}

bool Interruption::wait(std::chrono::milliseconds time) {
    if (!m_requested) {
        const sigset_t signals = heldSignals();
        const timespec limit{time.count() / 1000, (time.count() % 1000) * 1000000};
        m_requested = sigtimedwait(&signals, nullptr, &limit) > 0;
    }
    return m_requested;
}

} // namespace daxctl
