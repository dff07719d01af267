#pragma once

#include <memory>

#include "Common/DBUSWrapper/IDBUSProxy.h"
#include "ServiceInterface/IServiceManager.h"

namespace DAX::DAXIPC::DBUSLowLevel {

// The entry for a client of the update service:
//
//     IDAXIPC::initialize();
//     CServiceManagerProxyFactory factory(IDBUSProxy::createDefaultProxyFactory());
//     const auto manager = factory.create();
//     const auto session = manager->getService(priority, "my client", type);
//
// From here on the client uses the interfaces of the service as if the service were in its own process. See
// CServiceManagerProxy for connections, threads and errors.
class CServiceManagerProxyFactory : public Service::IServiceManager::IServiceManagerFactory {
public:
    explicit CServiceManagerProxyFactory(
        std::shared_ptr<Common::DBUSWrapper::IDBUSProxy::IDBUSProxyFactory> proxyFactory);

    // Opens a connection to the bus; throws DBUSWrapperExceptions::ErrorConnectingToDBUS when there is none. The first
    // call starts the service.
    std::unique_ptr<Service::IServiceManager> create() override;

private:
    std::shared_ptr<Common::DBUSWrapper::IDBUSProxy::IDBUSProxyFactory> m_proxyFactory;
};

} // namespace DAX::DAXIPC::DBUSLowLevel
