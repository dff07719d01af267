#pragma once

#include <memory>
#include <string>

#include <boost/core/noncopyable.hpp>

#include "DAXCommon/ServiceClientPriority.h"
#include "DAXCommon/UpgradeType.h"
#include "ServiceInterface/IServiceTransaction.h"

namespace DAX::Service {

// One client's session. It has at most one live transaction, and keeps it alive until it gives it up. Any thread may
// call; the calls wait for each other.
class IService : private boost::noncopyable {
public:
    virtual ~IService() = default;

    // Cancels the session's earlier transaction, if there is one, and starts another. Empty when the session is no
    // longer valid. Throws GenericException when the core refuses; exceptions of the core pass. After an exception the
    // session is still valid, without a transaction.
    virtual std::shared_ptr<IServiceTransaction> startNewTransaction(DAXCommon::UpgradeType upgradeType) = 0;

    // The priority that the client asked with; it never changes.
    virtual DAXCommon::ServiceClientPriority getClientPriority() = 0;

    // Ends the session and cancels its transaction; a second call has no effect. The reason goes to the core and the
    // log.
    virtual void invalidate(const std::string& reason) = 0;
};

} // namespace DAX::Service
