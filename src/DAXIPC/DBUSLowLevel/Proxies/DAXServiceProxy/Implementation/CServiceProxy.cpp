#include "DAXIPC/DBUSLowLevel/Proxies/DAXServiceProxy/CServiceProxy.h"

#include <utility>

#include <boost/serialization/string.hpp>

#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/RemoteCall.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/ServiceMethods.h"
#include "DAXIPC/DBUSLowLevel/Proxies/DAXServiceProxy/CServiceTransactionProxy.h"
#include "DAXIPC/DBUSLowLevel/Proxies/DAXServiceProxy/Implementation/ServiceConnection.h"

namespace DAX::DAXIPC::DBUSLowLevel {

using namespace Common::DBUSWrapper;

CServiceProxy::CServiceProxy(std::shared_ptr<IDBUSProxy::IDBUSProxyFactory> factory, std::shared_ptr<IDBUSProxy> proxy)
    : m_proxyFactory(std::move(factory)), m_proxy(std::move(proxy)) {}

std::shared_ptr<Service::IServiceTransaction> CServiceProxy::startNewTransaction(DAXCommon::UpgradeType upgradeType) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto transaction = connectToService(*m_proxyFactory);
    const auto busName = callRemote<ServiceMethods::startNewTransaction>(
        *m_proxy, upgradeType, transaction->getProxyUniqueId(), transaction->getDBUSDebugConnectionId());
    if (busName.empty()) {
        return nullptr;
    }
    sayHello(*transaction, busName);
    return std::make_shared<CServiceTransactionProxy>(transaction);
}

DAXCommon::ServiceClientPriority CServiceProxy::getClientPriority() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    // The service sends the bits of the priority, so a negative one arrives as a large number.
    return static_cast<DAXCommon::ServiceClientPriority>(
        static_cast<int>(callRemote<ServiceMethods::getClientPriority>(*m_proxy)));
}

void CServiceProxy::invalidate(const std::string& reason) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_valid) {
        callRemote<ServiceMethods::invalidate>(*m_proxy, reason);
        m_valid = false;
    }
}

} // namespace DAX::DAXIPC::DBUSLowLevel
