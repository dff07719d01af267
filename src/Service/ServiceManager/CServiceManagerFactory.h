#pragma once

#include <memory>

#include "CoreInterface/ICore.h"
#include "Platform/SystemAPI/PowerModeSystemAPI/IPowerModeSubscribersFactory.h"
#include "ServiceInterface/IServiceManager.h"

namespace DAX::Service {

// Makes service managers that reach the update core and the device's power events through the two factories, which it
// shares with them.
class CServiceManagerFactory : public IServiceManager::IServiceManagerFactory {
public:
    CServiceManagerFactory(std::shared_ptr<Core::ICore::ICoreFactory> coreFactory,
                           std::shared_ptr<Platform::IPowerModeSubscribersFactory> powerModeFactory);

    // Connects to the core; throws what the core's factory throws.
    std::unique_ptr<IServiceManager> create() override;

private:
    std::shared_ptr<Core::ICore::ICoreFactory> m_coreFactory;
    std::shared_ptr<Platform::IPowerModeSubscribersFactory> m_powerModeFactory;
};

} // namespace DAX::Service
