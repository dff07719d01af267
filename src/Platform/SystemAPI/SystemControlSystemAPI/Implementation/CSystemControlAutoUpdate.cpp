#include <sstream>
#include <string>

#include <boost/chrono/chrono_io.hpp>
#include <boost/exception/diagnostic_information.hpp>

#include "Common/Logging/LoggingStream.h"
#include "Platform/Product/IProductInfo.h"
#include "Platform/SystemAPI/SystemControlSystemAPI/Implementation/CSystemControl.h"
#include "Platform/SystemAPI/SystemControlSystemAPI/Implementation/SettingAccess.h"
#include "Platform/SystemAPI/VconfSystemAPI/IVConf.h"
#include "Utility/Utils/ErrInfoStream.h"
#include "Utility/Utils/GenericException.h"

namespace DAX::Platform {
namespace {

using Common::Utils::errinfo_description;
using Common::Utils::GenericException;
using DAXAutoUpdateKey::AUTOUPDATE_SPECIAL_MODE;
using DAXAutoUpdateKey::AUTOUPDATE_STATUS;
using SettingAccess::announceAndSet;
using SettingAccess::checked;

const int LAST_AUTOUPDATE_STATUS = 7;
const int LAST_AUTOUPDATE_SPECIAL_MODE = 1;

} // namespace

bool CSystemControl::m_isAutoUpdateAlwaysOn() {
    return m_isB2BTv() || IProductInfo::isTBMModel();
}

bool CSystemControl::m_isAutoUpdateOptionActive() {
    try {
        DAX_LOG(DBG) << "Calling isAutoUpdateOptionActive()";
        if (m_isAutoUpdateAlwaysOn()) {
            DAX_LOG(FTL) << "Auto update option is active. (B2B, Enterprise or AutoUpdateAlywaysOn option enable)";
            return true;
        }
        const int value = VConfT<int>(VCONF_KEY_AUTOUPDATE).get();
        DAX_LOG(DBG) << "Success getting info about AutoUpdate from vconf. Returned value:" << value;
        DAX_LOG(INF) << "AutoUpdate option is " << (value == 1 ? "active." : "inactive.");
        return value == 1;
    } catch (...) {
        DAX_LOG(ERR) << "Exception caught while getting Auto Update option from VConf: "
                     << boost::current_exception_diagnostic_information(true);
        return false;
    }
}

void CSystemControl::m_setAutoUpdateStatus(AUTOUPDATE_STATUS status) {
    announceAndSet<int>("m_setAutoUpdateStatus", VCONF_KEY_AUTOUPDATE_STATUS, status,
                        "Cannot set AutoUpdate status value in VConf.", BOOST_CURRENT_LOCATION);
}

void CSystemControl::m_setOOBEAcceptedUpdateInfoDataId(const std::string& id) {
    announceAndSet("m_setOOBEAcceptedUpdateInfoDataId", OOBE_ACCEPTED_UPGRADE_INFO_DATA_ID_VCONF_KEY, id,
                   "Cannot set OOBE Accepted Upgrade Version in VConf.", BOOST_CURRENT_LOCATION);
}

void CSystemControl::m_setUSBUIUpdateStatus(const std::string& status) {
    announceAndSet("m_setUSBUIUpdateStatus", VCONF_KEY_USBUI_STATUS, status,
                   "Cannot set USB UI update status value in VConf.", BOOST_CURRENT_LOCATION);
}

void CSystemControl::m_setUSBUIUpdateProgress(int progress) {
    announceAndSet("m_setUSBUIUpdateProgress", VCONF_KEY_USBUI_PROGRESS, progress,
                   "Cannot set USB UI update progress status value in VConf.", BOOST_CURRENT_LOCATION);
}

void CSystemControl::m_setAutoUpdateSpecialMode(AUTOUPDATE_SPECIAL_MODE mode) {
    announceAndSet<int>("m_setAutoUpdateSpecialMode", VCONF_KEY_AUTOUPDATE_SPECIAL_MODE, mode,
                        "Cannot set AutoUpdate mode value in VConf.", BOOST_CURRENT_LOCATION);
}

void CSystemControl::m_setIsBgOTNImportantUpdateEnabled(bool enabled) {
    announceAndSet("m_setIsBgOTNImportantUpdateEnabled", VCONF_KEY_BACKGROUND_UPDATE, enabled);
}

AUTOUPDATE_STATUS CSystemControl::m_getAutoUpdateStatus() {
    DAX_LOG(INF) << "CSystemControl::m_getAutoUpdateStatus()";
    int value = 0;
    try {
        value = VConfT<int>(VCONF_KEY_AUTOUPDATE_STATUS).get();
    } catch (const VConfException&) {
        DAX_LOG(ERR) << "Cannot get the value from VConf variable: " << VCONF_KEY_AUTOUPDATE_STATUS;
        DAX_THROW(GenericException(), errinfo_description("Cannot get AutoUpdate status from VConf."));
    }
    return static_cast<AUTOUPDATE_STATUS>(
        checked(VCONF_KEY_AUTOUPDATE_STATUS, value, LAST_AUTOUPDATE_STATUS, BOOST_CURRENT_LOCATION));
}

AUTOUPDATE_SPECIAL_MODE CSystemControl::m_getAutoUpdateSpecialMode() {
    DAX_LOG(INF) << "CSystemControl::m_getAutoUpdateSpecialMode()";
    const int value = SettingAccess::getOrDefault(VCONF_KEY_AUTOUPDATE_SPECIAL_MODE);
    return static_cast<AUTOUPDATE_SPECIAL_MODE>(
        checked(VCONF_KEY_AUTOUPDATE_SPECIAL_MODE, value, LAST_AUTOUPDATE_SPECIAL_MODE, BOOST_CURRENT_LOCATION));
}

std::string CSystemControl::m_getOOBEAcceptedUpdateInfoDataId() {
    std::string id = readOrDefault(OOBE_ACCEPTED_UPGRADE_INFO_DATA_ID_VCONF_KEY);
    DAX_LOG(INF) << "OOBE Accepted updateInfoDataId is " << id;
    return id;
}

bool CSystemControl::m_getIsBgOTNImportantUpdateEnabled() {
    return SettingAccess::getOrDefault(VCONF_KEY_BACKGROUND_UPDATE);
}

std::string CSystemControl::m_getAutoUpgradeTriggerKey() {
    return VCONF_KEY_AUTOUPGRADE_TRIGGER_KEY.name;
}

bool CSystemControl::m_setAutoUpgradeTrigger() {
    try {
        DAX_LOG(INF) << "CSystemControl::m_setAutoUpgradeTrigger()";
        std::ostringstream now; // always another one, which is what wakes those who watch the key
        now << boost::chrono::steady_clock::now();
        VConfT<std::string>(VCONF_KEY_AUTOUPGRADE_TRIGGER_KEY).set(now.str());
        return true;
    } catch (...) {
        DAX_LOG(ERR) << "Cannot set value for VConf key: " << VCONF_KEY_AUTOUPGRADE_TRIGGER_KEY << ", error"
                     << boost::current_exception_diagnostic_information(true);
        return false;
    }
}

} // namespace DAX::Platform
