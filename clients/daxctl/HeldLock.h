#pragma once

#include "dax/client.h"

namespace daxctl {

// A lock of the daemon for the length of a command, and what a person has to be told of it. The destructor releases it.
class HeldLock {
public:
    explicit HeldLock(dax::Lock lock);
    ~HeldLock();
    HeldLock(const HeldLock&) = delete;
    HeldLock& operator=(const HeldLock&) = delete;

    dax::LockId id() const { return m_lock.id(); }

    // Finds out whether the daemon, and with it the lock, has gone in the meantime, and reports that once on standard
    // error. Does not wait.
    void noticeLoss();

    // Whether the lock was lost before its release, as far as noticeLoss() and release() have found out.
    bool isLost() const { return m_isLost; }

    // False when the lock was lost before, or when the daemon did not release it; both are reported on standard error.
    // A second call does nothing.
    bool release();

private:
    void lose();

    dax::Lock m_lock;
    bool m_isHeld = true;
    bool m_isLost = false;
};

} // namespace daxctl
