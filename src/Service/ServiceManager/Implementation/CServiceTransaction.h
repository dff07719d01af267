#pragma once

#include <memory>
#include <string>
#include <vector>

#include <boost/optional.hpp>

#include "CoreInterface/ICore.h"
#include "CoreInterface/ICoreTransaction.h"
#include "CoreInterface/SearchingTransactionParameters.h"
#include "ServiceInterface/IServiceTransaction.h"

namespace DAX::Service::ServiceManager {

// One run over one core transaction. The destructor cancels nothing: the session has done that before. Takes no lock.
class CServiceTransaction : public IServiceTransaction {
public:
    // Creates the core transaction. Throws what the core throws, and GenericException when the core refuses.
    CServiceTransaction(const std::shared_ptr<Core::ICore>& core, Core::SearchingTransactionParameters parameters);

    boost::optional<bool> isSearchingPossible() override;
    ServiceTransactionProgress getSearchProgress() override;
    ServiceTransactionProgress getInstallationProgress() override;
    ServiceTransactionProgress getFinalizationProgress() override;
    ServiceSearchResult getSearchResult() override;
    std::list<std::string> getModelsSearchResult() override;
    void startSearching(std::string searchParameter) override;
    void startModelsSearching() override;
    void startInstallation(const std::set<std::string>& items) override;
    void startFinalization(const std::set<std::string>& items, bool finalizationFlag) override;
    void cancelServiceTransaction(const std::string& reason) override;

private:
    using UpgradeId = boost::optional<std::vector<unsigned char>>;

    void prepareSearchResult(ServiceSearchResult& result, UpgradeId& upgradeId);
    void keepUpgradeVersion(const boost::optional<std::string>& version);
    std::string prepareSuccessfulUpdateInfo();
    void acquireInstallationLock();
    void cancelTransactionsWithoutUpgrades();
    ServiceTransactionProgress getServiceTransactionProgress(Core::TransactionProgress progress);

    Core::SearchingTransactionParameters m_parameters;
    std::shared_ptr<Core::ICoreTransaction> m_coreTransaction; // never empty
    UpgradeId m_upgradeId;                                     // of the upgrade to install
    std::string m_currentVersion;                              // the version that ran when the transaction was made
    std::string m_upgradeVersion;                              // of the last upgrade found that has a version to show
    int m_upgradeScope = 0;
};

} // namespace DAX::Service::ServiceManager
