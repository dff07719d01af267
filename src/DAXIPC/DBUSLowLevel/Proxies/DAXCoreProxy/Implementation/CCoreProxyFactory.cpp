#include "DAXIPC/DBUSLowLevel/Proxies/DAXCoreProxy/CCoreProxyFactory.h"

#include <utility>

#include "DAXIPC/DBUSLowLevel/Proxies/DAXCoreProxy/Implementation/CCoreProxy.h"

namespace DAX::DAXIPC::DBUSLowLevel {

using Common::DBUSWrapper::IDBUSProxy;

CCoreProxyFactory::CCoreProxyFactory(std::shared_ptr<IDBUSProxy::IDBUSProxyFactory> proxyFactory,
                                     unsigned int activationTimeoutSeconds)
    : m_proxyFactory(std::move(proxyFactory)), m_activationTimeoutSeconds(activationTimeoutSeconds) {}

std::unique_ptr<Core::ICore> CCoreProxyFactory::create() {
    return std::make_unique<CCoreProxy>(m_proxyFactory, m_activationTimeoutSeconds);
}

} // namespace DAX::DAXIPC::DBUSLowLevel
