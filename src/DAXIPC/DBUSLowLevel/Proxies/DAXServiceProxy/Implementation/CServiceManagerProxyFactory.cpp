#include "DAXIPC/DBUSLowLevel/Proxies/DAXServiceProxy/CServiceManagerProxyFactory.h"

#include <utility>

#include "DAXIPC/DBUSLowLevel/Proxies/DAXServiceProxy/CServiceManagerProxy.h"

namespace DAX::DAXIPC::DBUSLowLevel {

CServiceManagerProxyFactory::CServiceManagerProxyFactory(
    std::shared_ptr<Common::DBUSWrapper::IDBUSProxy::IDBUSProxyFactory> proxyFactory)
    : m_proxyFactory(std::move(proxyFactory)) {}

std::unique_ptr<Service::IServiceManager> CServiceManagerProxyFactory::create() {
    return std::make_unique<CServiceManagerProxy>(m_proxyFactory);
}

} // namespace DAX::DAXIPC::DBUSLowLevel
