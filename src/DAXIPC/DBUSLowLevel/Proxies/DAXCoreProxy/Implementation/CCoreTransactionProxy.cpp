#include "DAXIPC/DBUSLowLevel/Proxies/DAXCoreProxy/Implementation/CCoreTransactionProxy.h"

#include <utility>

#include <boost/serialization/library_version_type.hpp> // which the next one needs and does not include
#include <boost/serialization/list.hpp>
#include <boost/serialization/optional.hpp>
#include <boost/serialization/set.hpp>
#include <boost/serialization/string.hpp>
#include <boost/serialization/vector.hpp>

#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/CoreMethods.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/RemoteCall.h"

namespace DAX::DAXIPC::DBUSLowLevel {

CCoreTransactionProxy::CCoreTransactionProxy(std::shared_ptr<Common::DBUSWrapper::IDBUSProxy> proxy)
    : m_proxy(std::move(proxy)) {}

boost::optional<bool> CCoreTransactionProxy::isSearchingPossible() {
    return callRemote<CoreMethods::isSearchingPossible>(*m_proxy);
}

void CCoreTransactionProxy::startSearching(std::string searchParameter) {
    callRemote<CoreMethods::startSearching>(*m_proxy, searchParameter);
}

void CCoreTransactionProxy::startModelsSearching() {
    callRemote<CoreMethods::startModelsSearching>(*m_proxy);
}

Core::TransactionProgress CCoreTransactionProxy::getSearchProgress() {
    return callRemote<CoreMethods::getSearchProgress>(*m_proxy);
}

Core::SearchResult CCoreTransactionProxy::getSearchResult() {
    return callRemote<CoreMethods::getSearchResult>(*m_proxy);
}

std::list<std::string> CCoreTransactionProxy::getModelsSearchResult() {
    return callRemote<CoreMethods::getModelsSearchResult>(*m_proxy);
}

void CCoreTransactionProxy::startInstallation(const std::set<std::string>& items) {
    callRemote<CoreMethods::startInstallation>(*m_proxy, items);
}

Core::TransactionProgress CCoreTransactionProxy::getInstallationProgress() {
    return callRemote<CoreMethods::getInstallationProgress>(*m_proxy);
}

void CCoreTransactionProxy::startFinalization(const std::set<std::string>& items,
                                              boost::optional<std::vector<unsigned char>> upgradeId,
                                              bool finalizationFlag) {
    callRemote<CoreMethods::startFinalization>(*m_proxy, items, upgradeId, finalizationFlag);
}

Core::TransactionProgress CCoreTransactionProxy::getFinalizationProgress() {
    return callRemote<CoreMethods::getFinalizationProgress>(*m_proxy);
}

void CCoreTransactionProxy::cancelCoreTransaction(const std::string& reason) {
    callRemote<CoreMethods::cancelCoreTransaction>(*m_proxy, reason);
}

} // namespace DAX::DAXIPC::DBUSLowLevel
