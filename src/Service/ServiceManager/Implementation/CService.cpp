#include "Service/ServiceManager/Implementation/CService.h"

#include <boost/exception/diagnostic_information.hpp>

#include "Common/Logging/LoggingStream.h"
#include "DAXCommon/UserInterestExceptions.h"
#include "Debug/DebugAndTestParameters/DAXParameters.h"
#include "Platform/SystemAPI/SystemControlSystemAPI/ISystemControl.h"
#include "Platform/SystemAPI/VconfSystemAPI/IVConf.h"
#include "Service/ServiceManager/CServiceTransactionStub.h"
#include "Service/ServiceManager/Implementation/CServiceTransaction.h"

namespace DAX::Service::ServiceManager {

using boost::current_exception_diagnostic_information;
using Platform::ISystemControl;

namespace {

void publishPriority(DAXCommon::ServiceClientPriority priority) {
    Platform::VConfT<int>(Platform::VCONF_KEY_CURRENT_CLIENT_PRIORITY).set(priority);
}

} // namespace

CService::CService(std::shared_ptr<Core::ICore>& core, DAXCommon::ServiceClientPriority priority,
                   const std::string& clientName, DAXCommon::ServiceTransactionType type)
    : m_core(core), m_clientPriority(priority), m_clientName(clientName), m_transactionType(type) {
    try {
        publishPriority(m_clientPriority);
    } catch (const Platform::VConfException&) {
        DAX_LOG(ERR) << "Error occurred while accessing to IVConf CurrentServiceClientPriorityKey: "
                     << current_exception_diagnostic_information(true);
    }
}

CService::~CService() {
    try {
        stopTransaction("Stopping ServiceTransaction in CService destructor.");
    } catch (...) {
        DAX_LOG(FTL) << "Exception caught while stopping transaction in ~CService: "
                     << current_exception_diagnostic_information(true);
    }
    try {
        publishPriority(DAXCommon::PRIORITY_NO_SESSION);
    } catch (...) {
        DAX_LOG(FTL) << "Exception caught while resetting VConf key in ~CService: "
                     << current_exception_diagnostic_information(true);
    }
}

std::shared_ptr<IServiceTransaction> CService::startNewTransaction(DAXCommon::UpgradeType upgradeType) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_valid) {
        return nullptr;
    }
    Core::SearchingTransactionParameters parameters;
    parameters.wasAnySuccessfulUpgrade = ISystemControl::wasAnySuccessfulUpgrade();
    parameters.isCellularConnectionAllowed = ISystemControl::isCellularConnectionAllowed();
    parameters.upgradeType = upgradeType;
    parameters.transactionType = m_transactionType;
    // First, so that the core has given up the earlier transaction when it is asked for another one.
    stopTransaction("There already is an active ServiceTransaction. Canceling it to create new ServiceTransaction.");
    m_transaction = createServiceTransaction(parameters);
    return m_transaction;
}

DAXCommon::ServiceClientPriority CService::getClientPriority() {
    return m_clientPriority;
}

void CService::invalidate(const std::string& reason) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_valid) {
        return;
    }
    m_valid = false;
    stopTransaction("Invalidating CService - reason: " + reason);
    DAX_LOG(INF) << "Invalidate done.";
}

std::string CService::clientName() const {
    return m_clientName;
}

DAXCommon::ServiceTransactionType CService::transactionType() const {
    return m_transactionType;
}

void CService::stopTransaction(const std::string& reason) {
    if (!m_transaction) {
        DAX_LOG(INF) << "Transaction does not exist. Nothing to do.";
        return;
    }
    try {
        m_transaction->cancelServiceTransaction(reason);
    } catch (const UserInterestExceptions::TransactionInvalidatedException&) {
        DAX_LOG(INF) << "Transaction was invalidated. Nothing to do.";
    } catch (...) {
        DAX_LOG(ERR) << "Unable to stop ServiceTransaction. Resetting transaction anyway. There's nothing else we can "
                        "do. Exception: "
                     << current_exception_diagnostic_information(true);
    }
    m_transaction.reset();
    DAX_LOG(INF) << "Reset done.";
}

std::shared_ptr<IServiceTransaction>
CService::createServiceTransaction(Core::SearchingTransactionParameters parameters) {
    const std::string scenario = DAXCommon::getDAXParameters().getServiceTransactionStubScenarioPath();
    if (!scenario.empty()) {
        return CServiceTransactionStub::load(scenario);
    }
    return std::make_shared<CServiceTransaction>(m_core, parameters);
}

} // namespace DAX::Service::ServiceManager
