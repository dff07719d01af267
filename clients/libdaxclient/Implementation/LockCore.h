#pragma once

#include <memory>
#include <mutex>

#include "Common/DBUSWrapper/PeerWatch.h"
#include "ServiceInterface/IServiceManager.h"
#include "libdaxclient/Implementation/Context.h"

namespace dax::detail {

// An external lock of one process of the service.
class LockCore {
public:
    // Acquires it. Starts the service if none runs.
    LockCore(std::shared_ptr<const Context> context, Priority priority);
    LockCore(const LockCore&) = delete;
    LockCore& operator=(const LockCore&) = delete;
    ~LockCore();

    LockId id() const { return m_id; }
    bool isLost();
    bool release();
    LockId detach();

private:
    enum class State {
        HELD,
        LOST,
        RELEASED,
        GIVEN_UP // by detach(), or by a release that failed: it may still be in force
    };

    void acquire(Priority priority);
    bool noticeLoss();
    bool releaseHeld();

    const std::shared_ptr<const Context> m_context;

    std::mutex m_mutex; // guards all below, but for m_id, which does not change after the constructor
    DAX::Common::DBUSWrapper::PeerWatch m_service;
    std::unique_ptr<DAX::Service::IServiceManager> m_manager;
    LockId m_id = 0;
    State m_state = State::HELD;
};

} // namespace dax::detail
