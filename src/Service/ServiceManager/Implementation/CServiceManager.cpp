#include "Service/ServiceManager/Implementation/CServiceManager.h"

#include <boost/exception/diagnostic_information.hpp>

#include "Common/Logging/LoggingStream.h"
#include "DAXCommon/UserInterestExceptions.h"
#include "Platform/Product/IProductInfo.h"
#include "Platform/SystemAPI/VconfSystemAPI/IVConf.h"
#include "Service/ServiceManager/Implementation/SearchingDateRegister.h"
#include "Utility/Utils/DAXAssert.h"
#include "Utility/Utils/ErrInfoStream.h"
#include "Utility/Utils/GenericException.h"

namespace DAX::Service::ServiceManager {

using Common::Utils::errinfo_description;
using Common::Utils::GenericException;
using DAXCommon::PRIORITY_MAIN_APP;
using DAXCommon::ServiceClientPriority;
using DAXCommon::ServiceTransactionType;

namespace {

// 1 while a lock that blocks the main update application is held, for other programs to read.
void publishIsExternalLockAcquired(int value) {
    Platform::VConfT<int>(Platform::VCONF_KEY_EXTERNAL_LOCK_ACQUIRED).set(value);
}

} // namespace

CServiceManager::CServiceManager(const std::shared_ptr<Core::ICore::ICoreFactory>& coreFactory,
                                 const std::shared_ptr<Platform::IPowerModeSubscribersFactory>& powerModeFactory)
    : m_powerModeSubscriber(powerModeFactory->createPowerModeChangeSignalSubscriber()) {
    DAX_LOG(INF) << "Service Manager is started.";
    m_core = coreFactory->create();
    DAX_LOG(INF) << "Core connected to Service";
    m_powerModeSubscriber->subscribe([this](DAXCommon::PowerMode mode) { onPowerModeChanged(mode); });
}

CServiceManager::~CServiceManager() {
    if (const std::shared_ptr<CService> owner = m_currentService.lock()) {
        owner->invalidate("Invalidating service in CServiceManager destructor.");
    }
}

boost::optional<boost::posix_time::ptime> CServiceManager::getLastSearchingForUpgradeDate() {
    return SearchingDateRegister::getInstance()->getDate();
}

std::vector<DAXCommon::UpgradeType> CServiceManager::getSupportedUpgradeTypes() {
    BOOST_ASSERT(m_core);
    return m_core->getSupportedUpgradeTypes();
}

std::shared_ptr<IService> CServiceManager::getService(ServiceClientPriority priority, const std::string& clientName,
                                                      ServiceTransactionType type) {
    DAX_LOG(INF) << "Service is requested. Client name: " << clientName;
    if (Platform::IProductInfo::isInstallationLocked()) {
        DAX_LOG(INF) << "Installation lock is acquired. There is no possibility to get service.";
        return nullptr;
    }
    if (isExternalLockAcquired(priority)) {
        DAX_LOG(INF) << "External lock is acquired by: " << describeHolders(m_externalLocks)
                     << ". There is no possibility to get service.";
        return nullptr;
    }
    if (!ownerGivesWay(priority, clientName)) {
        return nullptr;
    }
    const auto service = std::make_shared<CService>(m_core, priority, clientName, type);
    m_currentService.set(service);
    return service;
}

// The name comes before the priorities: a client cannot raise its own priority by asking again.
bool CServiceManager::ownerGivesWay(ServiceClientPriority priority, const std::string& clientName) {
    const std::shared_ptr<CService> owner = m_currentService.lock();
    if (!owner) {
        return true;
    }
    if (owner->clientName() == clientName) {
        DAX_LOG(WRN) << "Client " << clientName
                     << " is requesting service while he already owns it. Request for service is rejected.";
        return false;
    }
    const bool ownerStays = owner->getClientPriority() >= priority;
    DAX_LOG(ERR) << "Currently requesting client " << clientName << " has lower priority than current owner "
                 << owner->clientName()
                 << (ownerStays ? ". Request for service is rejected." : ". Current service will be invalidated.");
    if (ownerStays) {
        return false;
    }
    owner->invalidate("Invalidating service because higher priority client requested service: " + clientName);
    return true;
}

bool CServiceManager::isExternalLockAcquired(ServiceClientPriority priority) const {
    for (const auto& [id, lock] : m_externalLocks) {
        if (lock.second >= priority) {
            return true;
        }
    }
    return false;
}

bool CServiceManager::getServiceOwner(ServiceClientPriority& priority, std::string& clientName,
                                      ServiceTransactionType& type) {
    const std::shared_ptr<CService> owner = m_currentService.lock();
    if (!owner) {
        return false;
    }
    priority = owner->getClientPriority();
    clientName = owner->clientName();
    type = owner->transactionType();
    return true;
}

std::string CServiceManager::getCurrentVersion() {
    return m_core->getCurrentVersion();
}

ExternalLockId CServiceManager::acquireExternalLock(const std::string& clientName, ServiceClientPriority priority) {
    static ExternalLockId externalLockId = 0;
    const ExternalLockId id = ++externalLockId; // a denied request consumes one, too
    if (const std::shared_ptr<CService> owner = m_currentService.lock()) {
        if (owner->getClientPriority() >= priority) {
            DAX_EXCEPTION(UserInterestExceptions::ExternalLockDenied()).throwException();
        }
        DAX_LOG(INF) << "External lock " << id << " is acquired by " << clientName << ". Current service, belonging to "
                     << owner->clientName() << ", will be invalidated.";
        owner->invalidate("Invalidating service because external lock was acquired: " + clientName);
    } else {
        DAX_LOG(INF) << "External lock " << id << " is acquired by " << clientName;
    }
    m_externalLocks.emplace(id, ExternalLock(clientName, priority));
    m_currentService.reset();
    if (priority >= PRIORITY_MAIN_APP) {
        publishIsExternalLockAcquired(1);
    }
    return id;
}

void CServiceManager::releaseExternalLock(const std::string& clientName, ExternalLockId id) {
    const auto found = m_externalLocks.find(id);
    if (found == m_externalLocks.end()) {
        DAX_LOG(ERR) << "Client " << clientName << " is releasing a non-existent external lock " << id;
        DAX_THROW(GenericException(), errinfo_description("Invalid externalLockId."));
    }
    const std::string& holder = found->second.first;
    if (holder != clientName) {
        DAX_LOG(ERR) << "Client " << clientName << " is releasing external lock " << id << " that belongs to client "
                     << holder;
        DAX_THROW(GenericException(), errinfo_description("External lock owned by other client."));
    }
    DAX_LOG(INF) << "External lock " << id << " is being released by " << clientName;
    m_externalLocks.erase(found);
    if (!isExternalLockAcquired(PRIORITY_MAIN_APP)) {
        DAX_LOG(INF) << "No external locks that block MainApp are locked any more.";
        publishIsExternalLockAcquired(0);
    }
}

void CServiceManager::scheduleFactoryReset() {
    DAX_LOG(INF) << "Calling factoryReset for core.";
    m_core->scheduleFactoryReset();
}

void CServiceManager::onPowerModeChanged(DAXCommon::PowerMode /*mode*/) {
    try {
        DAX_LOG(INF) << "PowerMode Changed, invalidate service";
        if (const std::shared_ptr<CService> owner = m_currentService.lock()) {
            DAX_LOG(INF) << "service is stopped by power off.";
            owner->invalidate("Invalidating service due to power mode change.");
        } else {
            DAX_LOG(INF) << "service is stopped but there is no active service now.";
        }
    } catch (...) {
        DAX_LOG(FTL) << "Unable to invalidate transaction. Exception caught: "
                     << boost::current_exception_diagnostic_information(true);
    }
}

} // namespace DAX::Service::ServiceManager
