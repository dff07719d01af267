#pragma once

#include <list>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "Common/DBUSWrapper/IDBUSProxy.h"
#include "CoreInterface/ICoreTransaction.h"

namespace DAX::DAXIPC::DBUSLowLevel {

// One transaction of the update core, over a connection of its own that has said hello. When this object is destroyed,
// the core sees the connection end.
class CCoreTransactionProxy : public Core::ICoreTransaction {
public:
    explicit CCoreTransactionProxy(std::shared_ptr<Common::DBUSWrapper::IDBUSProxy> proxy);

    boost::optional<bool> isSearchingPossible() override;
    void startSearching(std::string searchParameter) override;
    void startModelsSearching() override;
    Core::TransactionProgress getSearchProgress() override;
    Core::SearchResult getSearchResult() override;
    std::list<std::string> getModelsSearchResult() override;
    void startInstallation(const std::set<std::string>& items) override;
    Core::TransactionProgress getInstallationProgress() override;
    void startFinalization(const std::set<std::string>& items, boost::optional<std::vector<unsigned char>> upgradeId,
                           bool finalizationFlag) override;
    Core::TransactionProgress getFinalizationProgress() override;
    void cancelCoreTransaction(const std::string& reason) override;

private:
    std::shared_ptr<Common::DBUSWrapper::IDBUSProxy> m_proxy;
};

} // namespace DAX::DAXIPC::DBUSLowLevel
