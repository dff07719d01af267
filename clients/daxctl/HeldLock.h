#pragma once

#include <memory>
#include <string>

#include "ServiceInterface/IServiceManager.h"
#include "daxctl/DaemonWatch.h"
#include "daxctl/Session.h"

namespace daxctl {

// An external lock of one daemon. The destructor releases it. When the daemon leaves the bus, its lock is gone as well;
// a later daemon is not asked to release it, since it may have given the number to somebody else.
class HeldLock {
public:
    // Starts the daemon if none runs. Throws ExternalLockDenied, and what every call to the daemon throws.
    explicit HeldLock(const Request& request);
    ~HeldLock();
    HeldLock(const HeldLock&) = delete;
    HeldLock& operator=(const HeldLock&) = delete;

    DAX::Service::ExternalLockId id() const { return m_id; }

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

    DaemonWatch m_daemon;
    std::unique_ptr<DAX::Service::IServiceManager> m_manager;
    std::string m_clientName;
    DAX::Service::ExternalLockId m_id = 0;
    bool m_isHeld = true;
    bool m_isLost = false;
};

} // namespace daxctl
