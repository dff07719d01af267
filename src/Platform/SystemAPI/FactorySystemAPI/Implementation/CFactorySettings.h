#pragma once

#include "Platform/SystemAPI/FactorySystemAPI/IFactorySettingsAPIImpl.h"

namespace DAX::Platform {

// The device's own factory menu.
class CFactorySettingsAPIImpl : public IFactorySettingsAPIImpl {
public:
    bool isRetailTvOtnEnabled() override;
    bool isB2BTvOtnEnabled() override;
    boost::optional<char> getOTNZone() override;
    bool isDAXFailTestActive() override;
    int getOTNServerType() override;
    bool useShortOTATransactionTimeout() override;
    bool isOTAEnabled() override;
    void factoryReset() override;
    void prepareOsUpgrade() override;
    bool isFastBootInProductionMode() override;
    int getModelEnum() override;
    int getLocalsetEnum() override;
};

} // namespace DAX::Platform
