#include "Service/ServiceManager/Implementation/CServiceTransaction.h"

#include <boost/exception/diagnostic_information.hpp>

#include "Common/Logging/LoggingStream.h"
#include "DAXCommon/UpgradeTypeNames.h"
#include "Platform/ProductPaths/IProductPaths.h"
#include "Platform/SystemAPI/VconfSystemAPI/IVConf.h"
#include "Service/ServiceManager/Implementation/SearchingDateRegister.h"
#include "Service/ServiceManager/Implementation/mapCoreResult.h"
#include "ServiceInterface/InstallationState.h"
#include "Utility/Utils/DAXAssert.h"
#include "Utility/Utils/ErrInfoStream.h"
#include "Utility/Utils/GenericException.h"

namespace DAX::Service::ServiceManager {

using Common::Utils::errinfo_description;
using Common::Utils::GenericException;

namespace {

const char NO_VERSION_TO_SHOW[] = "WOC_ONLY_VERSION";

std::string nameOf(Core::ETransactionResult result) {
    switch (result) {
    case Core::TRANSACTION_UNDEFINED:
        return "TRANSACTION_UNDEFINED";
    case Core::TRANSACTION_IN_PROGRESS:
        return "TRANSACTION_IN_PROGRESS";
    case Core::TRANSACTION_SUCCESS:
        return "TRANSACTION_SUCCESS";
    case Core::TRANSACTION_FAILED:
        return "TRANSACTION_FAILED";
    }
    return "ETransactionResult=" + std::to_string(result);
}

const std::string& nameOf(DAXCommon::UpgradeType upgradeType) {
    const auto& names = DAXCommon::upgradeTypeNames();
    const auto found = names.find(upgradeType);
    if (found == names.end()) {
        DAX_THROW(GenericException(), errinfo_description("upgradeType key out of range"));
    }
    return found->second;
}

const char* shortNameOfScope(int scope) {
    switch (scope) {
    case 1:
        return "(FP)";
    case 2:
        return "(F)";
    case 3:
        return "(P)";
    default:
        return "";
    }
}

SingleUpgradeDescription describe(const Core::SearchResult& found) {
    SingleUpgradeDescription upgrade;
    upgrade.upgradeType = found.upgradeType;
    upgrade.upgradeId = found.upgradeId;
    upgrade.version = found.version;
    upgrade.updateInfo = found.updateInfo;
    upgrade.kind = found.kind;
    upgrade.scope = found.scope;
    return upgrade;
}

void publishInstallationLockIsNotReleased() {
    try {
        Platform::VConfT<int>(Platform::VCONF_KEY_INSTALLATION_LOCK_RELEASED).set(0);
    } catch (const Platform::VConfException&) {
        DAX_LOG(ERR) << "Error occurred while accessing to IVConf InstallationLockReleasedKey: "
                     << boost::current_exception_diagnostic_information(true);
    }
}

} // namespace

CServiceTransaction::CServiceTransaction(const std::shared_ptr<Core::ICore>& core,
                                         Core::SearchingTransactionParameters parameters)
    : m_parameters(parameters) {
    m_currentVersion = core->getCurrentVersion();
    m_coreTransaction = core->createTransaction(parameters);
    if (!m_coreTransaction) {
        DAX_THROW(GenericException(), errinfo_description("Core refused to create a transaction."));
    }
}

boost::optional<bool> CServiceTransaction::isSearchingPossible() {
    return m_coreTransaction->isSearchingPossible();
}

ServiceTransactionProgress CServiceTransaction::getSearchProgress() {
    return getServiceTransactionProgress(m_coreTransaction->getSearchProgress());
}

ServiceTransactionProgress CServiceTransaction::getInstallationProgress() {
    return getServiceTransactionProgress(m_coreTransaction->getInstallationProgress());
}

ServiceTransactionProgress CServiceTransaction::getFinalizationProgress() {
    return getServiceTransactionProgress(m_coreTransaction->getFinalizationProgress());
}

ServiceSearchResult CServiceTransaction::getSearchResult() {
    ServiceSearchResult result;
    UpgradeId upgradeId;
    prepareSearchResult(result, upgradeId); // the id is dropped: only an installation keeps it
    return result;
}

std::list<std::string> CServiceTransaction::getModelsSearchResult() {
    std::list<std::string> models = m_coreTransaction->getModelsSearchResult();
    DAX_LOG(INF) << "Getting models list search result for Core. The models count is: " << models.size();
    return models;
}

void CServiceTransaction::startSearching(std::string searchParameter) {
    m_coreTransaction->startSearching(searchParameter); // when this throws, no date is recorded
    if (m_parameters.transactionType == DAXCommon::TRANSACTION_TYPE_DATED_SEARCH) {
        SearchingDateRegister::getInstance()->registerCurrentDate();
    }
}

void CServiceTransaction::startModelsSearching() {
    m_coreTransaction->startModelsSearching();
}

// Tells the core to install even after the cancel: the client is to see the core's own answer.
void CServiceTransaction::startInstallation(const std::set<std::string>& items) {
    ServiceSearchResult result;
    prepareSearchResult(result, m_upgradeId);
    cancelTransactionsWithoutUpgrades();
    m_coreTransaction->startInstallation(items);
}

void CServiceTransaction::startFinalization(const std::set<std::string>& items, bool finalizationFlag) {
    DAX_LOG(INF) << "Acquiring INSTALLATION LOCK.";
    publishInstallationLockIsNotReleased();
    acquireInstallationLock(); // first, so that a power cut never leaves a finalization without its lock
    DAX_LOG(INF) << "Starting finalizations.";
    m_coreTransaction->startFinalization(items, m_upgradeId, finalizationFlag);
}

void CServiceTransaction::cancelServiceTransaction(const std::string& reason) {
    DAX_LOG(INF) << "cancelServiceTransaction() reason: " << reason;
    m_coreTransaction->cancelCoreTransaction("cancelServiceTransaction() is canceling CoreTransaction. Reason: " +
                                             reason);
}

void CServiceTransaction::prepareSearchResult(ServiceSearchResult& result, UpgradeId& upgradeId) {
    upgradeId.reset();
    const Core::SearchResult coreSearchResult = m_coreTransaction->getSearchResult();
    DAX_LOG(INF) << "Getting search result for Core. The result is: " << static_cast<int>(coreSearchResult.result)
                 << " (" << nameOf(coreSearchResult.result) << ").";
    BOOST_ASSERT(coreSearchResult.result == Core::TRANSACTION_FAILED ||
                 coreSearchResult.result == Core::TRANSACTION_SUCCESS);
    if (coreSearchResult.result == Core::TRANSACTION_FAILED) {
        result.result = SERVICE_TRANSACTION_FAILED;
        return;
    }
    upgradeId = coreSearchResult.upgradeId;
    keepUpgradeVersion(coreSearchResult.version);
    result.result = SERVICE_TRANSACTION_SUCCESS;
    result.upgrade = describe(coreSearchResult);
    m_upgradeScope = coreSearchResult.scope;
}

void CServiceTransaction::keepUpgradeVersion(const boost::optional<std::string>& version) {
    if (version && *version != NO_VERSION_TO_SHOW) {
        m_upgradeVersion = *version;
        DAX_LOG(INF) << "--- search result for Core contains upgrade to version: " << *version;
    } else {
        DAX_LOG(INF) << "--- search result for Core contains upgrade without a version.";
    }
}

void CServiceTransaction::cancelTransactionsWithoutUpgrades() {
    if (!m_upgradeId) {
        m_coreTransaction->cancelCoreTransaction("Canceling CoreTransaction because it didn't findind any upgrade.");
    }
}

void CServiceTransaction::acquireInstallationLock() {
    const boost::filesystem::path path = Platform::IProductPaths::getInstallationLockPath();
    const std::string info = prepareSuccessfulUpdateInfo();
    ServiceCommon::saveInstallationState(path.string(), info);
}

std::string CServiceTransaction::prepareSuccessfulUpdateInfo() {
    DAX_LOG(INF) << "Preparing information about upgrade which is going to be installed.";
    std::string info = "Type: " + nameOf(m_parameters.upgradeType);
    if (m_currentVersion.empty()) {
        DAX_THROW(GenericException(), errinfo_description("getCurrentVersion is empty"));
    }
    info += shortNameOfScope(m_upgradeScope);
    info += " from: " + m_currentVersion + " to: " + m_upgradeVersion;
    DAX_LOG(INF) << "Upgrade information has been prepared.";
    return info;
}

ServiceTransactionProgress CServiceTransaction::getServiceTransactionProgress(Core::TransactionProgress progress) {
    ServiceTransactionProgress mapped;
    mapped.result = mapCoreResult[progress.result];
    mapped.progressPercent = progress.progressPercent;
    mapped.progressDetail = progress.progressDetail;
    return mapped;
}

} // namespace DAX::Service::ServiceManager
