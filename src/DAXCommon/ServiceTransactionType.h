#pragma once

namespace DAX::DAXCommon {

// For what purpose a session was requested. Passed through to the core; a search of the named type records its date.
enum ServiceTransactionType : int { TRANSACTION_TYPE_DATED_SEARCH = 2 };

} // namespace DAX::DAXCommon
