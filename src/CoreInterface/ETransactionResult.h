#pragma once

namespace DAX::Core {

// The state of one step of a transaction, as the core reports it. Any int may arrive from the bus; in a progress, other
// values count as TRANSACTION_UNDEFINED.
enum ETransactionResult : int {
    TRANSACTION_UNDEFINED = 0,
    TRANSACTION_IN_PROGRESS = 1,
    TRANSACTION_SUCCESS = 2,
    TRANSACTION_FAILED = 3
};

} // namespace DAX::Core
