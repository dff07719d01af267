#include "Service/ServiceManager/CServiceManagerFactory.h"

#include <utility>

#include "Service/ServiceManager/Implementation/CServiceManager.h"

namespace DAX::Service {

CServiceManagerFactory::CServiceManagerFactory(std::shared_ptr<Core::ICore::ICoreFactory> coreFactory,
                                               std::shared_ptr<Platform::IPowerModeSubscribersFactory> powerModeFactory)
    : m_coreFactory(std::move(coreFactory)), m_powerModeFactory(std::move(powerModeFactory)) {}

std::unique_ptr<IServiceManager> CServiceManagerFactory::create() {
    return std::make_unique<ServiceManager::CServiceManager>(m_coreFactory, m_powerModeFactory);
}

} // namespace DAX::Service
