#include "DAXIPC/DBUSLowLevel/Proxies/DAXCoreProxy/Implementation/CCoreTransactionProxy.h"

#include <utility>

#include <boost/serialization/library_version_type.hpp> // which the next one needs and does not include
#include <boost/serialization/list.hpp>
#include <boost/serialization/optional.hpp>
#include <boost/serialization/set.hpp>
#include <boost/serialization/string.hpp>
#include <boost/serialization/vector.hpp>

#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/DBUSDefines.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/RemoteCall.h"

namespace DAX::DAXIPC::DBUSLowLevel {

namespace Methods = DBUSNames::DBUSCore::DBUSICoreTransaction::Methods;

CCoreTransactionProxy::CCoreTransactionProxy(std::shared_ptr<Common::DBUSWrapper::IDBUSProxy> proxy)
    : m_proxy(std::move(proxy)) {}

boost::optional<bool> CCoreTransactionProxy::isSearchingPossible() {
    return callRemote<boost::optional<bool>>(*m_proxy, Methods::isSearchingPossible);
}

void CCoreTransactionProxy::startSearching(std::string searchParameter) {
    callRemote(*m_proxy, Methods::startSearching, searchParameter);
}

void CCoreTransactionProxy::startModelsSearching() {
    callRemote(*m_proxy, Methods::startModelsSearching);
}

Core::TransactionProgress CCoreTransactionProxy::getSearchProgress() {
    return callRemote<Core::TransactionProgress>(*m_proxy, Methods::getSearchProgress);
}

Core::SearchResult CCoreTransactionProxy::getSearchResult() {
    return callRemote<Core::SearchResult>(*m_proxy, Methods::getSearchResult);
}

std::list<std::string> CCoreTransactionProxy::getModelsSearchResult() {
    return callRemote<std::list<std::string>>(*m_proxy, Methods::getModelsSearchResult);
}

void CCoreTransactionProxy::startInstallation(const std::set<std::string>& items) {
    callRemote(*m_proxy, Methods::startInstallation, items);
}

Core::TransactionProgress CCoreTransactionProxy::getInstallationProgress() {
    return callRemote<Core::TransactionProgress>(*m_proxy, Methods::getInstallationProgress);
}

void CCoreTransactionProxy::startFinalization(const std::set<std::string>& items,
                                              boost::optional<std::vector<unsigned char>> upgradeId,
                                              bool finalizationFlag) {
    callRemote(*m_proxy, Methods::startFinalization, items, upgradeId, finalizationFlag);
}

Core::TransactionProgress CCoreTransactionProxy::getFinalizationProgress() {
    return callRemote<Core::TransactionProgress>(*m_proxy, Methods::getFinalizationProgress);
}

void CCoreTransactionProxy::cancelCoreTransaction(const std::string& reason) {
    callRemote(*m_proxy, Methods::cancelCoreTransaction, reason);
}

} // namespace DAX::DAXIPC::DBUSLowLevel
