#pragma once

#include <memory>
#include <string>

#include "ServiceInterface/IServiceManager.h"
#include "daxctl/DaemonWatch.h"
#include "daxctl/Session.h"

namespace daxctl {

// An external lock of one daemon. It goes when this object goes, however that comes about. When the daemon leaves the
// bus, the lock has gone with it; a later daemon may have given its number to somebody else, and is left alone.
class HeldLock {
public:
    // Starts the daemon if none runs. Throws ExternalLockDenied, and what every call throws.
    explicit HeldLock(const Request& request);
    ~HeldLock();
    HeldLock(const HeldLock&) = delete;
    HeldLock& operator=(const HeldLock&) = delete;

    DAX::Service::ExternalLockId id() const { return m_id; }

    // Finds out whether the daemon, and the lock with it, has gone meanwhile, and tells that once on standard error.
    // Does not wait.
    void noticeLoss();

    // Whether the lock went before its time, as far as noticeLoss() and release() have found out.
    bool isLost() const { return m_isLost; }

    // False when the lock was lost before, or the daemon did not release it, which standard error tells. At the second
    // call nothing happens.
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
