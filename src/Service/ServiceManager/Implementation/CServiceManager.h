#pragma once

#include <memory>
#include <string>
#include <vector>

#include "CoreInterface/ICore.h"
#include "Platform/SystemAPI/PowerModeSystemAPI/IPowerModeSubscribersFactory.h"
#include "Service/ServiceManager/Implementation/CService.h"
#include "Service/ServiceManager/Implementation/CurrentService.h"
#include "Service/ServiceManager/Implementation/ExternalLocks.h"
#include "ServiceInterface/IServiceManager.h"

namespace DAX::Service::ServiceManager {

// Arbitrates among clients: there is at most one valid session at a time, and a table of external locks. Client calls
// come on one thread. A power-mode change comes on another one and touches only the session, so the table needs no
// lock.
class CServiceManager : public IServiceManager {
public:
    // Connects to the core. Throws what the factories and the subscription throw.
    CServiceManager(const std::shared_ptr<Core::ICore::ICoreFactory>& coreFactory,
                    const std::shared_ptr<Platform::IPowerModeSubscribersFactory>& powerModeFactory);
    ~CServiceManager() override;

    boost::optional<boost::posix_time::ptime> getLastSearchingForUpgradeDate() override;
    std::vector<DAXCommon::UpgradeType> getSupportedUpgradeTypes() override;
    std::shared_ptr<IService> getService(DAXCommon::ServiceClientPriority priority, const std::string& clientName,
                                         DAXCommon::ServiceTransactionType type) override;
    bool getServiceOwner(DAXCommon::ServiceClientPriority& priority, std::string& clientName,
                         DAXCommon::ServiceTransactionType& type) override;
    std::string getCurrentVersion() override;
    ExternalLockId acquireExternalLock(const std::string& clientName,
                                       DAXCommon::ServiceClientPriority priority) override;
    void releaseExternalLock(const std::string& clientName, ExternalLockId id) override;
    void scheduleFactoryReset() override;

private:
    using PowerModeSubscriber = Common::Utils::SignalSubscriber<void(DAXCommon::PowerMode)>;

    bool isExternalLockAcquired(DAXCommon::ServiceClientPriority priority) const;
    bool ownerGivesWay(DAXCommon::ServiceClientPriority priority, const std::string& clientName);
    void onPowerModeChanged(DAXCommon::PowerMode mode);

    CurrentService m_currentService;
    std::shared_ptr<Core::ICore> m_core;
    ExternalLocks m_externalLocks;
    std::unique_ptr<PowerModeSubscriber> m_powerModeSubscriber;
};

} // namespace DAX::Service::ServiceManager
