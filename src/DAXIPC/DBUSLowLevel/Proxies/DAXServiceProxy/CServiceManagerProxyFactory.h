#pragma once

#include <memory>

#include "Common/DBUSWrapper/IDBUSProxy.h"
#include "ServiceInterface/IServiceManager.h"

namespace DAX::DAXIPC::DBUSLowLevel {

// Where a client of the update service begins:
//
//     IDAXIPC::initialize();
//     CServiceManagerProxyFactory factory(IDBUSProxy::createDefaultProxyFactory());
//     const auto manager = factory.create();
//     const auto session = manager->getService(priority, "my client", type);
//
// From here on the interfaces of the service are used as if the service were in the same process. See
// CServiceManagerProxy for connections, threads and errors.
class CServiceManagerProxyFactory : public Service::IServiceManager::IServiceManagerFactory {
public:
    explicit CServiceManagerProxyFactory(
        std::shared_ptr<Common::DBUSWrapper::IDBUSProxy::IDBUSProxyFactory> proxyFactory);

    // Opens a connection to the bus; throws DBUSWrapperExceptions::ErrorConnectingToDBUS when there is none. The
    // service itself is started by the first call.
    std::unique_ptr<Service::IServiceManager> create() override;

private:
    std::shared_ptr<Common::DBUSWrapper::IDBUSProxy::IDBUSProxyFactory> m_proxyFactory;
};

} // namespace DAX::DAXIPC::DBUSLowLevel
