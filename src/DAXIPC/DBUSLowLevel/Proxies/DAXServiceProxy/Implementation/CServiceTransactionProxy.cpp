#include "DAXIPC/DBUSLowLevel/Proxies/DAXServiceProxy/CServiceTransactionProxy.h"

#include <utility>

#include <boost/serialization/library_version_type.hpp> // which the next one needs and does not include
#include <boost/serialization/list.hpp>
#include <boost/serialization/optional.hpp>
#include <boost/serialization/set.hpp>
#include <boost/serialization/string.hpp>

#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/RemoteCall.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/ServiceMethods.h"

namespace DAX::DAXIPC::DBUSLowLevel {

using Service::ServiceTransactionProgress;

CServiceTransactionProxy::CServiceTransactionProxy(std::shared_ptr<Common::DBUSWrapper::IDBUSProxy> proxy)
    : m_proxy(std::move(proxy)) {}

template <const auto& METHOD, class... Args>
auto CServiceTransactionProxy::call(const Args&... args) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return callRemote<METHOD>(*m_proxy, args...);
}

boost::optional<bool> CServiceTransactionProxy::isSearchingPossible() {
    return call<ServiceMethods::isSearchingPossible>();
}

ServiceTransactionProgress CServiceTransactionProxy::getSearchProgress() {
    return call<ServiceMethods::getSearchProgress>();
}

ServiceTransactionProgress CServiceTransactionProxy::getInstallationProgress() {
    return call<ServiceMethods::getInstallationProgress>();
}

ServiceTransactionProgress CServiceTransactionProxy::getFinalizationProgress() {
    return call<ServiceMethods::getFinalizationProgress>();
}

Service::ServiceSearchResult CServiceTransactionProxy::getSearchResult() {
    return call<ServiceMethods::getSearchResult>();
}

std::list<std::string> CServiceTransactionProxy::getModelsSearchResult() {
    return call<ServiceMethods::getModelsSearchResult>();
}

void CServiceTransactionProxy::startSearching(std::string searchParameter) {
    call<ServiceMethods::startSearching>(searchParameter);
}

void CServiceTransactionProxy::startModelsSearching() {
    call<ServiceMethods::startModelsSearching>();
}

void CServiceTransactionProxy::startInstallation(const std::set<std::string>& items) {
    call<ServiceMethods::startInstallation>(items);
}

void CServiceTransactionProxy::startFinalization(const std::set<std::string>& items, bool finalizationFlag) {
    call<ServiceMethods::startFinalization>(items, finalizationFlag);
}

void CServiceTransactionProxy::cancelServiceTransaction(const std::string& reason) {
    call<ServiceMethods::cancelServiceTransaction>(reason);
}

} // namespace DAX::DAXIPC::DBUSLowLevel
