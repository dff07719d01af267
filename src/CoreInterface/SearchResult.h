#pragma once

#include <string>
#include <vector>

#include <boost/optional.hpp>

#include "CoreInterface/ETransactionResult.h"
#include "DAXCommon/UpgradeType.h"
#include "UpgradeKind.h"

namespace DAX::Core {

// What a search found, as the core reports it. The service accepts only TRANSACTION_SUCCESS and TRANSACTION_FAILED as
// `result`; it reads the other fields on success only. The order on the wire is result, upgradeType, kind, upgradeId,
// version, updateInfo, scope.
struct SearchResult {
    ETransactionResult result = TRANSACTION_UNDEFINED;
    DAXCommon::UpgradeType upgradeType = DAXCommon::UNDEFINED;
    DAXCommon::UpgradeKind kind = DAXCommon::UPGRADE_KIND_REGULAR;
    int scope = 0;                         // 1 "(FP)", 2 "(F)", 3 "(P)" in reports; others print nothing
    std::vector<unsigned char> upgradeId;  // binary identifier of the upgrade
    boost::optional<std::string> version;  // the target version; "WOC_ONLY_VERSION" means none to show
    std::vector<unsigned char> updateInfo; // the upgrade's information document, for the client

    // Calls visit(name, field) for each field, in the order on the wire.
    template <class Record, class Visit>
    static void forEachField(Record& record, const Visit& visit) {
        visit("result", record.result);
        visit("upgradeType", record.upgradeType);
        visit("kind", record.kind);
        visit("upgradeId", record.upgradeId);
        visit("version", record.version);
        visit("updateInfo", record.updateInfo);
        visit("scope", record.scope);
    }

    template <class Archive>
    void serialize(Archive& archive, unsigned int version);
};

} // namespace DAX::Core
