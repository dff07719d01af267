#pragma once

#include <csignal>

#include <pthread.h>

namespace DAX::Common::Utils {

// Blocks these signals while it lives, for the thread that makes it; threads that this one makes meanwhile inherit the
// blocking for good. Signals that were blocked before stay so. It must be destroyed on the thread that made it, in
// reverse order of others like it.
class BlockedSignals {
public:
    explicit BlockedSignals(const sigset_t& signals) { pthread_sigmask(SIG_BLOCK, &signals, &m_previous); }
    BlockedSignals(const BlockedSignals&) = delete;
    BlockedSignals& operator=(const BlockedSignals&) = delete;
    ~BlockedSignals() { pthread_sigmask(SIG_SETMASK, &m_previous, nullptr); }

private:
    sigset_t m_previous;
};

} // namespace DAX::Common::Utils
