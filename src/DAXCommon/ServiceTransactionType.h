#pragma once

namespace DAX::DAXCommon {

// The purpose of a session. Any int may arrive from the bus and is passed to the core; only a session of the named type
// records the date of its searches.
enum ServiceTransactionType : int { TRANSACTION_TYPE_DATED_SEARCH = 2 };

} // namespace DAX::DAXCommon
