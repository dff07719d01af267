#pragma once

#include <memory>
#include <string>

#include <boost/core/noncopyable.hpp>

#include "DAXCommon/ServiceClientPriority.h"
#include "DAXCommon/UpgradeType.h"
#include "ServiceInterface/IServiceTransaction.h"

namespace DAX::Service {

// One client's session. It holds at most one live transaction.
class IService : private boost::noncopyable {
public:
    virtual ~IService() = default;

    // Cancels the session's earlier transaction, if there is one. Empty when the session is no longer valid. Exceptions
    // of the core pass through.
    virtual std::shared_ptr<IServiceTransaction> startNewTransaction(DAXCommon::UpgradeType upgradeType) = 0;
    virtual DAXCommon::ServiceClientPriority getClientPriority() = 0;

    // Ends the session; a second call has no effect. May come from any thread.
    virtual void invalidate(const std::string& reason) = 0;
};

} // namespace DAX::Service
