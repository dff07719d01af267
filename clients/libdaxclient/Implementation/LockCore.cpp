#include "libdaxclient/Implementation/LockCore.h"

#include <utility>

#include "Common/DBUSWrapper/DBUSWrapperExceptions.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/DBUSDefines.h"
#include "DAXIPC/DBUSLowLevel/Proxies/DAXServiceProxy/CServiceManagerProxy.h"
#include "libdaxclient/Implementation/ServiceProxies.h"
#include "libdaxclient/Implementation/Translation.h"

namespace dax::detail {

using DAX::Common::DBUSWrapper::DBUSWrapperExceptions::RemoteObjectNotAccessible;
using DAX::DAXCommon::ServiceClientPriority;
using DAX::DAXIPC::DBUSLowLevel::CServiceManagerProxy;
namespace Names = DAX::DAXIPC::DBUSLowLevel::DBUSNames::DBUSService::DBUSIServiceManager;

namespace {

const int ATTEMPTS = 5;

} // namespace

LockCore::LockCore(std::shared_ptr<const Context> context, Priority priority)
    : m_context(std::move(context)), m_service(m_context->connection, Names::CONNECTION_NAME) {
    acquire(priority);
}

// A service that leaves before it answers has given no lock, and neither has one that has lost its name and with it our
// permission to call it. Another one may be asked then.
void LockCore::acquire(Priority priority) {
    for (int left = ATTEMPTS;; --left) {
        const std::string uniqueName = m_service.follow();
        try {
            m_manager = std::make_unique<CServiceManagerProxy>(createServiceProxies(m_context->connection, uniqueName));
            m_id = m_manager->acquireExternalLock(m_context->clientName, static_cast<ServiceClientPriority>(priority));
            return;
        } catch (const RemoteObjectNotAccessible&) {
            if (left == 0 || m_service.askWhetherItHasTheName()) {
                throw;
            }
        }
    }
}

LockCore::~LockCore() {
    if (m_context->isOfAnotherProcess()) {
        return;
    }
    try {
        release();
    } catch (...) { // nobody is left to be told
        return;
    }
}

bool LockCore::isLost() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return callService(*m_context, [this] { return noticeLoss(); });
}

bool LockCore::noticeLoss() {
    if (m_state == State::HELD && m_service.hasGone()) {
        m_state = State::LOST;
    }
    return m_state == State::LOST;
}

// Asks nobody first whether the lock is lost: the program may be about to be ended. The call reaches no other service.
bool LockCore::release() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return callService(*m_context, [this] { return releaseHeld(); });
}

bool LockCore::releaseHeld() {
    if (m_state == State::HELD && m_service.isKnownToHaveGone()) {
        m_state = State::LOST;
    }
    if (m_state != State::HELD) {
        return m_state == State::RELEASED;
    }
    m_state = State::GIVEN_UP; // until the service has said that it is released
    try {
        m_manager->releaseExternalLock(m_context->clientName, m_id);
        m_state = State::RELEASED;
    } catch (...) {
        if (!m_service.askWhetherItHasGone()) {
            throw;
        }
        m_state = State::LOST;
    }
    return m_state == State::RELEASED;
}

LockId LockCore::detach() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_state = m_state == State::HELD ? State::GIVEN_UP : m_state;
    return m_id;
}

} // namespace dax::detail
