#include <boost/exception/diagnostic_information.hpp>
#include <system_info.h>

#include "Common/Logging/LoggingStream.h"
#include "Platform/Product/IProductInfo.h"
#include "Platform/SystemAPI/SystemControlSystemAPI/Implementation/CSystemControl.h"
#include "Platform/SystemAPI/SystemControlSystemAPI/Implementation/SettingAccess.h"
#include "Platform/SystemAPI/SystemInfoSystemAPI/ISystemInfo.h"
#include "Platform/SystemAPI/VconfSystemAPI/IVConf.h"

namespace DAX::Platform {
namespace {

const int MAINLAND_CHINA = 24; // of SYSTEM_INFO_KEY_SALES_REGION

} // namespace

bool CSystemControl::m_isB2BTv() {
    try {
        const bool active = ISystemInfo::getSystemInfoCustomBool("com.velmora/featureconf/product.b2b_option_support");
        DAX_LOG(INF) << "B2B support option is " << (active ? "active." : "inactive.");
        return active;
    } catch (...) {
        DAX_LOG(FTL) << "Exception caught while getting B2B support option from system-info: "
                     << boost::current_exception_diagnostic_information(true);
        return false;
    }
}

bool CSystemControl::m_isChineseMainlandModel() {
    return ISystemInfo::getSystemInfoInt(SYSTEM_INFO_KEY_SALES_REGION) == MAINLAND_CHINA;
}

bool CSystemControl::m_isPremiumModel() {
    return IProductInfo::getBoardType() != "Marlow9q";
}

bool CSystemControl::m_isMaintenanceMode() {
    const bool active = SettingAccess::isOne(VCONF_KEY_MAINTENANCE_MODE);
    DAX_LOG(INF) << "CSystemControl::m_isMaintenanceMode returns value: " << active;
    return active;
}

bool CSystemControl::m_isRetailMode() {
    const bool active = SettingAccess::isOne(VCONF_KEY_RETAIL_MODE);
    DAX_LOG(INF) << "CSystemControl::m_isRetailMode returns value: " << active;
    return active;
}

} // namespace DAX::Platform
