#pragma once

#include <map>

#include "CoreInterface/ETransactionResult.h"
#include "ServiceInterface/EServiceTransactionResult.h"

namespace DAX::Service::ServiceManager {

// From the core's results to those that clients see. It is read with operator[], so that a value that no core should
// send becomes 0.
extern std::map<Core::ETransactionResult, EServiceTransactionResult> mapCoreResult;

} // namespace DAX::Service::ServiceManager
