#pragma once

#include <tuple>

#include "CoreInterface/SearchResult.h"
#include "CoreInterface/SearchingTransactionParameters.h"
#include "CoreInterface/TransactionProgress.h"
#include "ServiceInterface/ServiceSearchResult.h"
#include "ServiceInterface/ServiceTransactionProgress.h"
#include "ServiceInterface/SingleUpgradeDescription.h"

// The records are compared field by field; the system itself never compares them.
namespace DAX::Core {

inline bool operator==(const SearchingTransactionParameters& a, const SearchingTransactionParameters& b) {
    return std::tie(a.upgradeType, a.transactionType, a.isCellularConnectionAllowed, a.wasAnySuccessfulUpgrade) ==
           std::tie(b.upgradeType, b.transactionType, b.isCellularConnectionAllowed, b.wasAnySuccessfulUpgrade);
}

inline bool operator==(const TransactionProgress& a, const TransactionProgress& b) {
    return std::tie(a.result, a.progressPercent, a.progressDetail) ==
           std::tie(b.result, b.progressPercent, b.progressDetail);
}

inline bool operator==(const SearchResult& a, const SearchResult& b) {
    return std::tie(a.result, a.upgradeType, a.kind, a.scope, a.upgradeId, a.version, a.updateInfo) ==
           std::tie(b.result, b.upgradeType, b.kind, b.scope, b.upgradeId, b.version, b.updateInfo);
}

} // namespace DAX::Core

namespace DAX::Service {

inline bool operator==(const ServiceTransactionProgress& a, const ServiceTransactionProgress& b) {
    return std::tie(a.result, a.progressPercent, a.progressDetail) ==
           std::tie(b.result, b.progressPercent, b.progressDetail);
}

inline bool operator==(const SingleUpgradeDescription& a, const SingleUpgradeDescription& b) {
    return std::tie(a.upgradeType, a.upgradeId, a.version, a.updateInfo, a.kind, a.scope) ==
           std::tie(b.upgradeType, b.upgradeId, b.version, b.updateInfo, b.kind, b.scope);
}

inline bool operator==(const ServiceSearchResult& a, const ServiceSearchResult& b) {
    return a.result == b.result && a.upgrade == b.upgrade;
}

} // namespace DAX::Service
