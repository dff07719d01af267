#include "DAXIPC/DBUSLowLevel/Proxies/DAXServiceProxy/CServiceManagerProxy.h"

#include <utility>

#include <boost/archive/text_oarchive.hpp> // for the next one, which does not include what it needs
#include <boost/serialization/optional.hpp>
#include <boost/serialization/string.hpp>
#include <boost/serialization/vector.hpp>

#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/DBUSDefines.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/RemoteCall.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/ServiceMethods.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/TimeSerialization.h"
#include "DAXIPC/DBUSLowLevel/Proxies/DAXServiceProxy/CServiceProxy.h"
#include "DAXIPC/DBUSLowLevel/Proxies/DAXServiceProxy/Implementation/ServiceConnection.h"

namespace DAX::DAXIPC::DBUSLowLevel {

using namespace Common::DBUSWrapper;
namespace DBUSIServiceManager = DBUSNames::DBUSService::DBUSIServiceManager;

CServiceManagerProxy::CServiceManagerProxy(std::shared_ptr<IDBUSProxy::IDBUSProxyFactory> factory)
    : m_proxyFactory(std::move(factory)), m_proxy(connectToService(*m_proxyFactory)) {
    m_proxy->init(DBUSIServiceManager::CONNECTION_NAME);
}

boost::optional<boost::posix_time::ptime> CServiceManagerProxy::getLastSearchingForUpgradeDate() {
    return callRemote<ServiceMethods::getLastSearchingForUpgradeDate>(*m_proxy);
}

std::vector<DAXCommon::UpgradeType> CServiceManagerProxy::getSupportedUpgradeTypes() {
    return callRemote<ServiceMethods::getSupportedUpgradeTypes>(*m_proxy);
}

std::shared_ptr<Service::IService> CServiceManagerProxy::getService(DAXCommon::ServiceClientPriority priority,
                                                                    const std::string& clientName,
                                                                    DAXCommon::ServiceTransactionType type) {
    // The session's connection is opened first, since the request carries its name.
    const auto session = connectToService(*m_proxyFactory);
    const auto busName = callRemote<ServiceMethods::getService>(
        *m_proxy, priority, clientName, type, session->getProxyUniqueId(), session->getDBUSDebugConnectionId());
    if (busName.empty()) {
        return nullptr;
    }
    sayHello(*session, busName);
    return std::make_shared<CServiceProxy>(m_proxyFactory, session);
}

bool CServiceManagerProxy::getServiceOwner(DAXCommon::ServiceClientPriority& priority, std::string& clientName,
                                           DAXCommon::ServiceTransactionType& type) {
    // This method alone takes no parameter archive, not even an empty one.
    const std::stringstream noBody;
    std::stringstream output;
    DBUSHelper::exchange(ServiceMethods::getServiceOwner.name, noBody, output, *m_proxy, StandardExceptionHandler());
    ResultOf<ServiceMethods::getServiceOwner> result{};
    auto& [isOwned, ownerPriority, ownerName, ownerType] = result;
    DBUSHelper::readResult(output, isOwned, ownerPriority, ownerName, ownerType);
    // Without an owner the answer holds values, too, but the caller's must stay.
    if (isOwned) {
        priority = ownerPriority;
        clientName = ownerName;
        type = ownerType;
    }
    return isOwned;
}

std::string CServiceManagerProxy::getCurrentVersion() {
    return callRemote<ServiceMethods::getCurrentVersion>(*m_proxy);
}

Service::ExternalLockId CServiceManagerProxy::acquireExternalLock(const std::string& clientName,
                                                                  DAXCommon::ServiceClientPriority priority) {
    return callRemote<ServiceMethods::acquireExternalLock>(*m_proxy, clientName, priority);
}

void CServiceManagerProxy::releaseExternalLock(const std::string& clientName, Service::ExternalLockId id) {
    callRemote<ServiceMethods::releaseExternalLock>(*m_proxy, clientName, id);
}

void CServiceManagerProxy::scheduleFactoryReset() {
    callRemote<ServiceMethods::scheduleFactoryReset>(*m_proxy);
}

} // namespace DAX::DAXIPC::DBUSLowLevel
