#include "Platform/SystemAPI/FactorySystemAPI/IFactorySettings.h"

#include <utility>

#include "Platform/SystemAPI/FactorySystemAPI/Implementation/CFactorySettings.h"
#include "Utility/Utils/SingletonInstanceHandler.h"

namespace DAX::Platform {
namespace {

Common::Utils::SingletonInstanceHandler<IFactorySettingsAPIImpl> singletonHandler([] {
    return std::make_unique<CFactorySettingsAPIImpl>();
});

} // namespace

bool IFactorySettings::isRetailTvOtnEnabled() {
    return singletonHandler->isRetailTvOtnEnabled();
}

bool IFactorySettings::isB2BTvOtnEnabled() {
    return singletonHandler->isB2BTvOtnEnabled();
}

boost::optional<char> IFactorySettings::getOTNZone() {
    return singletonHandler->getOTNZone();
}

bool IFactorySettings::isDAXFailTestActive() {
    return singletonHandler->isDAXFailTestActive();
}

int IFactorySettings::getOTNServerType() {
    return singletonHandler->getOTNServerType();
}

bool IFactorySettings::useShortOTATransactionTimeout() {
    return singletonHandler->useShortOTATransactionTimeout();
}

bool IFactorySettings::isOTAEnabled() {
    return singletonHandler->isOTAEnabled();
}

void IFactorySettings::factoryReset() {
    singletonHandler->factoryReset();
}

void IFactorySettings::prepareOsUpgrade() {
    singletonHandler->prepareOsUpgrade();
}

bool IFactorySettings::isFastBootInProductionMode() {
    return singletonHandler->isFastBootInProductionMode();
}

int IFactorySettings::getModelEnum() {
    return singletonHandler->getModelEnum();
}

int IFactorySettings::getLocalsetEnum() {
    return singletonHandler->getLocalsetEnum();
}

void FactorySystemAPI::Details::setImplementationSingleton(std::unique_ptr<IFactorySettingsAPIImpl> implementation) {
    singletonHandler.setImplementationSingleton(std::move(implementation));
}

} // namespace DAX::Platform
