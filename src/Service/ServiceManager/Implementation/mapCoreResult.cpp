#include "Service/ServiceManager/Implementation/mapCoreResult.h"

namespace DAX::Service::ServiceManager {

std::map<Core::ETransactionResult, EServiceTransactionResult> mapCoreResult{
    {Core::TRANSACTION_UNDEFINED, SERVICE_TRANSACTION_UNDEFINED},
    {Core::TRANSACTION_IN_PROGRESS, SERVICE_TRANSACTION_IN_PROGRESS},
    {Core::TRANSACTION_SUCCESS, SERVICE_TRANSACTION_SUCCESS},
    {Core::TRANSACTION_FAILED, SERVICE_TRANSACTION_FAILED},
};

} // namespace DAX::Service::ServiceManager
