#include "DAXIPC/DBUSLowLevel/Proxies/DAXServiceProxy/CServiceTransactionProxy.h"

#include <utility>

#include <boost/serialization/library_version_type.hpp> // which the next one needs and does not include
#include <boost/serialization/list.hpp>
#include <boost/serialization/optional.hpp>
#include <boost/serialization/set.hpp>
#include <boost/serialization/string.hpp>

#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/DBUSDefines.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/RemoteCall.h"

namespace DAX::DAXIPC::DBUSLowLevel {

using Service::ServiceTransactionProgress;
namespace Methods = DBUSNames::DBUSService::DBUSIServiceTransaction::Methods;

CServiceTransactionProxy::CServiceTransactionProxy(std::shared_ptr<Common::DBUSWrapper::IDBUSProxy> proxy)
    : m_proxy(std::move(proxy)) {}

template <class R, class... Args>
R CServiceTransactionProxy::call(const char* method, const Args&... args) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return callRemote<R>(*m_proxy, method, args...);
}

boost::optional<bool> CServiceTransactionProxy::isSearchingPossible() {
    return call<boost::optional<bool>>(Methods::isSearchingPossible);
}

ServiceTransactionProgress CServiceTransactionProxy::getSearchProgress() {
    return call<ServiceTransactionProgress>(Methods::getSearchProgress);
}

ServiceTransactionProgress CServiceTransactionProxy::getInstallationProgress() {
    return call<ServiceTransactionProgress>(Methods::getInstallationProgress);
}

ServiceTransactionProgress CServiceTransactionProxy::getFinalizationProgress() {
    return call<ServiceTransactionProgress>(Methods::getFinalizationProgress);
}

Service::ServiceSearchResult CServiceTransactionProxy::getSearchResult() {
    return call<Service::ServiceSearchResult>(Methods::getSearchResult);
}

std::list<std::string> CServiceTransactionProxy::getModelsSearchResult() {
    return call<std::list<std::string>>(Methods::getModelsSearchResult);
}

void CServiceTransactionProxy::startSearching(std::string searchParameter) {
    call(Methods::startSearching, searchParameter);
}

void CServiceTransactionProxy::startModelsSearching() {
    call(Methods::startModelsSearching);
}

void CServiceTransactionProxy::startInstallation(const std::set<std::string>& items) {
    call(Methods::startInstallation, items);
}

void CServiceTransactionProxy::startFinalization(const std::set<std::string>& items, bool finalizationFlag) {
    call(Methods::startFinalization, items, finalizationFlag);
}

void CServiceTransactionProxy::cancelServiceTransaction(const std::string& reason) {
    call(Methods::cancelServiceTransaction, reason);
}

} // namespace DAX::DAXIPC::DBUSLowLevel
