#pragma once

#include <vector>

#include "CoreInterface/SearchResult.h"
#include "CoreInterface/SearchingTransactionParameters.h"
#include "CoreInterface/TransactionProgress.h"
#include "ServiceInterface/ServiceSearchResult.h"
#include "ServiceInterface/ServiceTransactionProgress.h"

// The records in the golden files.
namespace DAX::Tests {

inline const std::vector<unsigned char> SAMPLE_UPGRADE_ID{1, 255};
inline const std::vector<unsigned char> SAMPLE_UPDATE_INFO{'<', 'u', '/', '>'};

inline Core::SearchingTransactionParameters sampleParameters() {
    Core::SearchingTransactionParameters parameters;
    parameters.upgradeType = DAXCommon::OTN;
    parameters.transactionType = DAXCommon::TRANSACTION_TYPE_DATED_SEARCH;
    parameters.isCellularConnectionAllowed = true;
    return parameters;
}

inline Core::SearchResult sampleSearchResult() {
    Core::SearchResult result;
    result.result = Core::TRANSACTION_SUCCESS;
    result.upgradeType = DAXCommon::OTN;
    result.kind = DAXCommon::UPGRADE_KIND_IMPORTANT;
    result.scope = 2;
    result.upgradeId = SAMPLE_UPGRADE_ID;
    result.version = std::string("18.1");
    result.updateInfo = SAMPLE_UPDATE_INFO;
    return result;
}

inline Service::SingleUpgradeDescription sampleUpgrade() {
    Service::SingleUpgradeDescription upgrade;
    upgrade.upgradeType = DAXCommon::OTN;
    upgrade.upgradeId = SAMPLE_UPGRADE_ID;
    upgrade.version = std::string("18.1");
    upgrade.updateInfo = SAMPLE_UPDATE_INFO;
    upgrade.kind = DAXCommon::UPGRADE_KIND_IMPORTANT;
    upgrade.scope = 2;
    return upgrade;
}

inline Service::ServiceSearchResult sampleServiceSearchResult() {
    Service::ServiceSearchResult result;
    result.result = Service::SERVICE_TRANSACTION_SUCCESS;
    result.upgrade = sampleUpgrade();
    return result;
}

// A progress as the core or a client sees it.
template <class Progress>
Progress sampleProgress(int result, int percent, boost::optional<float> detail) {
    Progress progress;
    progress.result = static_cast<decltype(progress.result)>(result);
    progress.progressPercent = percent;
    progress.progressDetail = detail;
    return progress;
}

} // namespace DAX::Tests
