#pragma once

#include <boost/optional.hpp>

#include "CoreInterface/ETransactionResult.h"

namespace DAX::Core {

// How far a step has come, as the core reports it. On the wire the percentage comes first and the result second.
struct TransactionProgress {
    ETransactionResult result = TRANSACTION_UNDEFINED;
    int progressPercent = 0;               // 0 to 100; passed to the client unchecked
    boost::optional<float> progressDetail; // for the client, passed through unchanged

    // Calls visit(name, field) for each field, in the order on the wire.
    template <class Record, class Visit>
    static void forEachField(Record& record, const Visit& visit) {
        visit("progressPercent", record.progressPercent);
        visit("result", record.result);
        visit("progressDetail", record.progressDetail);
    }

    template <class Archive>
    void serialize(Archive& archive, unsigned int version);
};

} // namespace DAX::Core
