#include "daxctl/HeldLock.h"

#include <cstdio>

#include "Common/DBUSWrapper/DBUSWrapperExceptions.h"
#include "DAXIPC/DBUSLowLevel/Proxies/DAXServiceProxy/CServiceManagerProxyFactory.h"
#include "daxctl/Failure.h"
#include "daxctl/PinnedProxyFactory.h"

namespace daxctl {

using DAX::Common::DBUSWrapper::DBUSWrapperExceptions::RemoteObjectNotAccessible;
using DAX::DAXCommon::ServiceClientPriority;

namespace {

const int ATTEMPTS = 5;

} // namespace

// A daemon that leaves before it answers has given no lock, and neither has one that has lost its name and with it our
// permission to call it. Another daemon may be asked then.
HeldLock::HeldLock(const Request& request) : m_clientName(request.clientName) {
    for (int left = ATTEMPTS;; --left) {
        const std::string uniqueName = m_daemon.follow();
        try {
            m_manager =
                DAX::DAXIPC::DBUSLowLevel::CServiceManagerProxyFactory(std::make_shared<PinnedProxyFactory>(uniqueName))
                    .create();
            m_id = m_manager->acquireExternalLock(m_clientName, ServiceClientPriority(request.priority));
            return;
        } catch (const RemoteObjectNotAccessible&) {
            if (left == 0 || m_daemon.askWhetherItHasTheName()) {
                throw;
            }
        }
    }
}

HeldLock::~HeldLock() {
    release();
}

void HeldLock::noticeLoss() {
    if (m_isHeld && m_daemon.hasGone()) {
        lose();
    }
}

void HeldLock::lose() {
    m_isHeld = false;
    m_isLost = true;
    std::fprintf(stderr, "The lock %u is lost: the daemon that gave it has left the bus.\n", m_id);
}

bool HeldLock::release() {
    noticeLoss();
    if (!m_isHeld) {
        return !m_isLost;
    }
    m_isHeld = false;
    try {
        m_manager->releaseExternalLock(m_clientName, m_id);
    } catch (...) {
        if (m_daemon.askWhetherItHasGone()) {
            lose();
        } else {
            m_isLost = true;
            std::fprintf(stderr, "The lock %u could not be released: %s\n", m_id,
                         describeCurrentException().toString().c_str());
        }
    }
    return !m_isLost;
}

} // namespace daxctl
