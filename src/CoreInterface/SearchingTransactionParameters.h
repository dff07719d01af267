#pragma once

#include "DAXCommon/ServiceTransactionType.h"
#include "DAXCommon/UpgradeType.h"

namespace DAX::Core {

// What the core learns when a transaction is created. The order of the fields is the order on the wire.
struct SearchingTransactionParameters {
    DAXCommon::UpgradeType upgradeType = DAXCommon::UNDEFINED; // what the client asked for
    DAXCommon::ServiceTransactionType transactionType = DAXCommon::ServiceTransactionType(0); // the session's type
    bool isCellularConnectionAllowed = false;
    bool wasAnySuccessfulUpgrade = false;

    // Calls visit(name, field) for each field, in the order on the wire.
    template <class Record, class Visit>
    static void forEachField(Record& record, const Visit& visit) {
        visit("upgradeType", record.upgradeType);
        visit("transactionType", record.transactionType);
        visit("isCellularConnectionAllowed", record.isCellularConnectionAllowed);
        visit("wasAnySuccessfulUpgrade", record.wasAnySuccessfulUpgrade);
    }

    template <class Archive>
    void serialize(Archive& archive, unsigned int version);
};

} // namespace DAX::Core
