#pragma once

#include <memory>

#include "CoreInterface/ICore.h"
#include "Platform/SystemAPI/PowerModeSystemAPI/IPowerModeSubscribersFactory.h"
#include "ServiceInterface/IServiceManager.h"

namespace DAX::Service {

// Makes service managers that reach the update core and the device's power events through the two factories. The
// managers share the factories. One thread at a time.
class CServiceManagerFactory : public IServiceManager::IServiceManagerFactory {
public:
    CServiceManagerFactory(std::shared_ptr<Core::ICore::ICoreFactory> coreFactory,
                           std::shared_ptr<Platform::IPowerModeSubscribersFactory> powerModeFactory);

    // Connects to the core. Throws what the two factories throw, and GenericException when the device refuses the
    // subscription to its power events.
    std::unique_ptr<IServiceManager> create() override;

private:
    std::shared_ptr<Core::ICore::ICoreFactory> m_coreFactory;
    std::shared_ptr<Platform::IPowerModeSubscribersFactory> m_powerModeFactory;
};

} // namespace DAX::Service
