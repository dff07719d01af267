#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Common/DBUSWrapper/IDBUSProxy.h"
#include "ServiceInterface/IServiceManager.h"

namespace DAX::DAXIPC::DBUSLowLevel {

// The service manager over the bus, for clients.
//
// Connections: this object, each session and each transaction have one each. The service ties a session to the
// connection of the manager that asked for it: when this object is destroyed, or its process ends, the session ends.
// Dropping the pointer to a session does not end it; IService::invalidate() does. Messages that others send to these
// connections are dropped, between the calls by a thread of this library.
//
// Threads: one at a time.
//
// Errors, the same for every operation of the three proxies: an exception of DAX::UserInterestExceptions that the far
// side threw, by its type, with its support code in tag_errinfo_supportcode and the far side's diagnostic text in
// tag_errinfo_string. DAXUnknownException stands for all exceptions without a name on the bus, such as that of a
// revoked session. RemoteObjectActivationTimedOut, RemoteObjectNotAccessible (also without an answer within 60
// seconds), DBUSMemoryError and ErrorConnectingToDBUS of DBUSWrapperExceptions report the transport, and
// boost::archive::archive_exception an answer that cannot be read. An object stays usable after any of these.
class CServiceManagerProxy : public Service::IServiceManager {
public:
    // Throws ErrorConnectingToDBUS without a bus. Does not call the service yet.
    explicit CServiceManagerProxy(std::shared_ptr<Common::DBUSWrapper::IDBUSProxy::IDBUSProxyFactory> factory);

    boost::optional<boost::posix_time::ptime> getLastSearchingForUpgradeDate() override;
    std::vector<DAXCommon::UpgradeType> getSupportedUpgradeTypes() override;

    // Null when the service refuses: another client holds it, or a lock is in force. Otherwise the session has said
    // hello and can be used.
    std::shared_ptr<Service::IService> getService(DAXCommon::ServiceClientPriority priority,
                                                  const std::string& clientName,
                                                  DAXCommon::ServiceTransactionType type) override;
    bool getServiceOwner(DAXCommon::ServiceClientPriority& priority, std::string& clientName,
                         DAXCommon::ServiceTransactionType& type) override;
    std::string getCurrentVersion() override;

    // Throws ExternalLockDenied when a session of this priority or a higher one exists.
    Service::ExternalLockId acquireExternalLock(const std::string& clientName,
                                                DAXCommon::ServiceClientPriority priority) override;

    // Throws DAXUnknownException for an unknown lock and for one that another client holds.
    void releaseExternalLock(const std::string& clientName, Service::ExternalLockId id) override;
    void scheduleFactoryReset() override;

private:
    std::shared_ptr<Common::DBUSWrapper::IDBUSProxy::IDBUSProxyFactory> m_proxyFactory;
    std::shared_ptr<Common::DBUSWrapper::IDBUSProxy> m_proxy;
};

} // namespace DAX::DAXIPC::DBUSLowLevel
