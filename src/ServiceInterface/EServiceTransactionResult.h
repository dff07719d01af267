#pragma once

namespace DAX::Service {

// The state of one step of a transaction, as clients see it.
enum EServiceTransactionResult : int {
    SERVICE_TRANSACTION_UNDEFINED = 0,
    SERVICE_TRANSACTION_IN_PROGRESS = 1,
    SERVICE_TRANSACTION_SUCCESS = 2,
    SERVICE_TRANSACTION_FAILED = 3
};

} // namespace DAX::Service
