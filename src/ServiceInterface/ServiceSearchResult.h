#pragma once

#include <boost/optional.hpp>

#include "ServiceInterface/EServiceTransactionResult.h"
#include "ServiceInterface/SingleUpgradeDescription.h"

namespace DAX::Service {

// The answer to a client's request for the search result. The order of the fields is the order on the wire.
struct ServiceSearchResult {
    EServiceTransactionResult result = SERVICE_TRANSACTION_UNDEFINED;
    boost::optional<SingleUpgradeDescription> upgrade; // engaged exactly when `result` is SERVICE_TRANSACTION_SUCCESS

    // Calls visit(name, field) for each field, in the order on the wire.
    template <class Record, class Visit>
    static void forEachField(Record& record, const Visit& visit) {
        visit("result", record.result);
        visit("upgrade", record.upgrade);
    }

    template <class Archive>
    void serialize(Archive& archive, unsigned int version);
};

} // namespace DAX::Service
