#include "Common/Logging/LoggingStream.h"
#include "Platform/SystemAPI/FactorySystemAPI/IFactorySettings.h"
#include "Platform/SystemAPI/SystemControlSystemAPI/Implementation/CSystemControl.h"
#include "Platform/SystemAPI/SystemControlSystemAPI/Implementation/SettingAccess.h"
#include "Platform/SystemAPI/VconfSystemAPI/IVConf.h"

namespace DAX::Platform {

bool CSystemControl::m_isCellularConnectionAllowed() {
    return SettingAccess::isOne(VCONF_KEY_USE_CELLULAR);
}

bool CSystemControl::m_isOTNEnabled() {
    return m_isB2BTv() ? IFactorySettings::isB2BTvOtnEnabled() : IFactorySettings::isRetailTvOtnEnabled();
}

bool CSystemControl::m_isOTAEnabled() {
    return IFactorySettings::isOTAEnabled();
}

bool CSystemControl::m_isStandaloneOTNEnabled() {
    const bool enabled = readOrDefault(VCONF_KEY_STANDALONE_OTN);
    DAX_LOG(INF) << "CSystemControl::m_isStandaloneOTNEnabled returns value: " << enabled;
    return enabled;
}

} // namespace DAX::Platform
