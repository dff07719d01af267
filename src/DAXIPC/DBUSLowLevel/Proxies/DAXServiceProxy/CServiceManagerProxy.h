#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Common/DBUSWrapper/IDBUSProxy.h"
#include "ServiceInterface/IServiceManager.h"

namespace DAX::DAXIPC::DBUSLowLevel {

// The service manager over the bus.
//
// Connections: this object, each session and each transaction own one each. The service ties a session to the
// connection of the manager that asked for it: when this object goes, or its process dies, the session ends. Giving up
// the pointer of a session does not end it: IService::invalidate does. What others send to the connections is dropped,
// between the calls by a thread of the library's own.
//
// Threads: one at a time.
//
// Errors, of every operation of the three proxies: an exception of DAX::UserInterestExceptions that the far side threw,
// by its type, with its support code in tag_errinfo_supportcode and the far side's diagnostic text in
// tag_errinfo_string; DAXUnknownException stands for all that have no name on the bus, a revoked session among them.
// RemoteObjectActivationTimedOut, RemoteObjectNotAccessible (also when no answer came within 60 seconds),
// DBUSMemoryError and ErrorConnectingToDBUS of DBUSWrapperExceptions tell of the transport, and
// boost::archive::archive_exception of an answer that cannot be read. An object stays usable after any of these.
class CServiceManagerProxy : public Service::IServiceManager {
public:
    // Throws ErrorConnectingToDBUS. Does not talk to the service.
    explicit CServiceManagerProxy(std::shared_ptr<Common::DBUSWrapper::IDBUSProxy::IDBUSProxyFactory> factory);

    boost::optional<boost::posix_time::ptime> getLastSearchingForUpgradeDate() override;
    std::vector<DAXCommon::UpgradeType> getSupportedUpgradeTypes() override;

    // Empty when the service refuses: another client holds the service, or a lock is in force.
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
