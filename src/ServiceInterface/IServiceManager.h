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

// Identifies one external lock. The first one that a process of the service issues is 1. Ids are not used again, but a
// denied request uses one up.
using ExternalLockId = unsigned int;

// Decides who may use the update machinery. One thread at a time. Operations that need the update core throw what the
// core throws; a client that reaches the service over the bus also meets the exceptions that its proxy names.
class IServiceManager : private boost::noncopyable {
public:
    // Makes service managers; the caller owns them.
    class IServiceManagerFactory {
    public:
        virtual ~IServiceManagerFactory() = default;

        // A manager that is ready for calls. Throws when the connection that it needs cannot be made.
        virtual std::unique_ptr<IServiceManager> create() = 0;
    };

    virtual ~IServiceManager() = default;

    // The date of the last search, in local time; empty when none is known.
    virtual boost::optional<boost::posix_time::ptime> getLastSearchingForUpgradeDate() = 0;

    // The types of upgrade that the core supports.
    virtual std::vector<DAXCommon::UpgradeType> getSupportedUpgradeTypes() = 0;

    // Asks for a session. Empty when the request is refused: while the installation lock or an external lock of this
    // priority or a higher one is in force, while a client of the same name has a session, and while a session of this
    // priority or a higher one exists. A session of a lower priority is invalidated. The name is the client's choice;
    // `type` is handed to the core. Only the returned pointer keeps the session alive in the service; a client over the
    // bus ends its session with IService::invalidate instead.
    virtual std::shared_ptr<IService> getService(DAXCommon::ServiceClientPriority priority,
                                                 const std::string& clientName,
                                                 DAXCommon::ServiceTransactionType type) = 0;

    // Who has the session; one that was invalidated counts until its holder gives it up. False when nobody has one; the
    // arguments are then left untouched.
    virtual bool getServiceOwner(DAXCommon::ServiceClientPriority& priority, std::string& clientName,
                                 DAXCommon::ServiceTransactionType& type) = 0;

    // The version that the device runs now, as the core tells it.
    virtual std::string getCurrentVersion() = 0;

    // Holds back every client of this priority or a lower one until the lock is released or the service ends; a
    // client's death does not release it. Any number of locks may be held. A session of a lower priority is
    // invalidated. Throws UserInterestExceptions::ExternalLockDenied when a session of this priority or a higher one
    // exists, and VConfException when the settings store fails, although the lock is then in force.
    virtual ExternalLockId acquireExternalLock(const std::string& clientName,
                                               DAXCommon::ServiceClientPriority priority) = 0;

    // Releases a lock that was acquired under the same client name. Throws GenericException for an unknown lock and for
    // one that was acquired under another name, and VConfException when the settings store fails, although the lock is
    // then released.
    virtual void releaseExternalLock(const std::string& clientName, ExternalLockId id) = 0;

    // Has the core schedule a factory reset.
    virtual void scheduleFactoryReset() = 0;
};

} // namespace DAX::Service
