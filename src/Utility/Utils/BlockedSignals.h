#pragma once

#include <csignal>

#include <pthread.h>

namespace DAX::Common::Utils {

// While it lives, these signals are held back from the thread that makes it, and from each thread that this one makes
// meanwhile, for good. Those that were held back before stay so. It ends on the thread that made it, in the reverse
// order of others like it.
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
