#pragma once

#include <memory>
#include <string>
#include <vector>

#include <boost/core/noncopyable.hpp>
#include <boost/date_time/posix_time/ptime.hpp>
#include <boost/optional.hpp>

#include "DAXCommon/ServiceClientPriority.h"
#include "DAXCommon/ServiceTransactionType.h"
#include "DAXCommon/UpgradeType.h"
#include "ServiceInterface/IService.h"

namespace DAX::Service {

// Identifies one external lock. The first one issued by a process is 1.
using ExternalLockId = unsigned int;

// Decides who may use the update machinery. One thread at a time.
class IServiceManager : private boost::noncopyable {
public:
    class IServiceManagerFactory {
    public:
        virtual ~IServiceManagerFactory() = default;

        // A manager that is connected to the core. Throws when the core cannot be reached.
        virtual std::unique_ptr<IServiceManager> create() = 0;
    };

    virtual ~IServiceManager() = default;

    // The date of the last search, in local time; empty when none is known.
    virtual boost::optional<boost::posix_time::ptime> getLastSearchingForUpgradeDate() = 0;
    virtual std::vector<DAXCommon::UpgradeType> getSupportedUpgradeTypes() = 0;

    // Empty when the request is refused. The caller's pointer alone keeps the session alive.
    virtual std::shared_ptr<IService> getService(DAXCommon::ServiceClientPriority priority,
                                                 const std::string& clientName,
                                                 DAXCommon::ServiceTransactionType type) = 0;

    // True when a session exists; otherwise the arguments are left untouched.
    virtual bool getServiceOwner(DAXCommon::ServiceClientPriority& priority, std::string& clientName,
                                 DAXCommon::ServiceTransactionType& type) = 0;

    // The version that the device runs now.
    virtual std::string getCurrentVersion() = 0;

    // Throws UserInterestExceptions::ExternalLockDenied when a session of this priority or a higher one exists.
    virtual ExternalLockId acquireExternalLock(const std::string& clientName,
                                               DAXCommon::ServiceClientPriority priority) = 0;

    // Throws GenericException for an unknown lock and for one that another client holds.
    virtual void releaseExternalLock(const std::string& clientName, ExternalLockId id) = 0;
    virtual void scheduleFactoryReset() = 0;
};

} // namespace DAX::Service
