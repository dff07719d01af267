#pragma once

#include <boost/optional.hpp>

#include "ServiceInterface/EServiceTransactionResult.h"

namespace DAX::Service {

// How far a step has come, as clients see it. The order of the fields is the order on the wire.
struct ServiceTransactionProgress {
    EServiceTransactionResult result = SERVICE_TRANSACTION_UNDEFINED;
    int progressPercent = 0;               // 0 to 100
    boost::optional<float> progressDetail; // from the core, unchanged

    // Calls visit(name, field) for each field, in the order on the wire.
    template <class Record, class Visit>
    static void forEachField(Record& record, const Visit& visit) {
        visit("result", record.result);
        visit("progressPercent", record.progressPercent);
        visit("progressDetail", record.progressDetail);
    }

    template <class Archive>
    void serialize(Archive& archive, unsigned int version);
};

} // namespace DAX::Service
