#pragma once

#include <map>

#include "CoreInterface/ETransactionResult.h"
#include "ServiceInterface/EServiceTransactionResult.h"

namespace DAX::Service::ServiceManager {

// What clients see of a core's result. Looked up with operator[]: a value that no core should send becomes 0.
extern std::map<Core::ETransactionResult, EServiceTransactionResult> mapCoreResult;

} // namespace DAX::Service::ServiceManager
