#include "daxctl/Interruption.h"

#include <algorithm>
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
    pthread_sigmask(SIG_UNBLOCK, &m_signals, nullptr); // a signal that nobody has taken takes effect now
}

bool Interruption::wait(std::chrono::milliseconds time) {
    return m_first != 0 || next(time) != 0;
}

int Interruption::next(std::chrono::milliseconds time) {
    const timespec limit{time.count() / 1000, (time.count() % 1000) * 1000000};
    const int signal = std::max(sigtimedwait(&m_signals, nullptr, &limit), 0);
    int none = 0;
    m_first.compare_exchange_strong(none, signal);
    return signal;
}

} // namespace daxctl
