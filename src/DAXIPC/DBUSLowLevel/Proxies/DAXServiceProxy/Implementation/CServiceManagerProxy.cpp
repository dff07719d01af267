#include "DAXIPC/DBUSLowLevel/Proxies/DAXServiceProxy/CServiceManagerProxy.h"

#include <utility>

#include <boost/archive/text_oarchive.hpp> // for the next one, which does not include what it needs
#include <boost/serialization/optional.hpp>
#include <boost/serialization/string.hpp>
#include <boost/serialization/vector.hpp>

#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/DBUSDefines.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/RemoteCall.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/TimeSerialization.h"
#include "DAXIPC/DBUSLowLevel/Proxies/DAXServiceProxy/CServiceProxy.h"
#include "DAXIPC/DBUSLowLevel/Proxies/DAXServiceProxy/Implementation/ServiceConnection.h"

namespace DAX::DAXIPC::DBUSLowLevel {

using namespace Common::DBUSWrapper;
namespace DBUSIServiceManager = DBUSNames::DBUSService::DBUSIServiceManager;
namespace Methods = DBUSIServiceManager::Methods;

CServiceManagerProxy::CServiceManagerProxy(std::shared_ptr<IDBUSProxy::IDBUSProxyFactory> factory)
    : m_proxyFactory(std::move(factory)), m_proxy(connectToService(*m_proxyFactory)) {
    m_proxy->init(DBUSIServiceManager::CONNECTION_NAME);
}

boost::optional<boost::posix_time::ptime> CServiceManagerProxy::getLastSearchingForUpgradeDate() {
    return callRemote<boost::optional<boost::posix_time::ptime>>(*m_proxy, Methods::getLastSearchingForUpgradeDate);
}

std::vector<DAXCommon::UpgradeType> CServiceManagerProxy::getSupportedUpgradeTypes() {
    return callRemote<std::vector<DAXCommon::UpgradeType>>(*m_proxy, Methods::getSupportedUpgradeTypes);
}

std::shared_ptr<Service::IService> CServiceManagerProxy::getService(DAXCommon::ServiceClientPriority priority,
                                                                    const std::string& clientName,
                                                                    DAXCommon::ServiceTransactionType type) {
    // The session's connection is opened first, since the request carries its name.
    const auto session = connectToService(*m_proxyFactory);
    const auto busName = callRemote<std::string>(*m_proxy, Methods::getService, priority, clientName, type,
                                                 session->getProxyUniqueId(), session->getDBUSDebugConnectionId());
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
    DBUSHelper::exchange(Methods::getServiceOwner, noBody, output, *m_proxy, StandardExceptionHandler());
    bool isOwned = false;
    auto ownerPriority = priority;
    std::string ownerName;
    auto ownerType = type;
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
    return callRemote<std::string>(*m_proxy, Methods::getCurrentVersion);
}

Service::ExternalLockId CServiceManagerProxy::acquireExternalLock(const std::string& clientName,
                                                                  DAXCommon::ServiceClientPriority priority) {
    return callRemote<Service::ExternalLockId>(*m_proxy, Methods::acquireExternalLock, clientName, priority);
}

void CServiceManagerProxy::releaseExternalLock(const std::string& clientName, Service::ExternalLockId id) {
    callRemote(*m_proxy, Methods::releaseExternalLock, clientName, id);
}

void CServiceManagerProxy::scheduleFactoryReset() {
    callRemote(*m_proxy, Methods::scheduleFactoryReset);
}

} // namespace DAX::DAXIPC::DBUSLowLevel
