#include <sstream>
#include <string>
#include <vector>

#include <boost/chrono/chrono_io.hpp>
#include <boost/exception/diagnostic_information.hpp>
#include <boost/filesystem/operations.hpp>

#include "Common/IO/FileStream.h"
#include "Common/IO/FlagFile.h"
#include "Common/IO/IOExceptions.h"
#include "Common/Logging/LoggingStream.h"
#include "Debug/DebugAndTestParameters/DebugAndTestParameters.h"
#include "Platform/ProductPaths/IProductPaths.h"
#include "Platform/SystemAPI/SystemControlSystemAPI/Implementation/CSystemControl.h"
#include "Platform/SystemAPI/SystemControlSystemAPI/Implementation/ModifiedPartitionsMarkers.h"
#include "Platform/SystemAPI/SystemControlSystemAPI/Implementation/SettingAccess.h"
#include "Platform/SystemAPI/SystemControlSystemAPI/Implementation/UpgradeStatusDirectories.h"
#include "Platform/SystemAPI/VconfSystemAPI/IVConf.h"
#include "Utility/Utils/ErrInfoStream.h"
#include "Utility/Utils/GenericException.h"

namespace DAX::Platform {
namespace {

using boost::filesystem::path;
using Common::Utils::errinfo_description;
using Common::Utils::GenericException;
using DAXAutoUpdateKey::AUTOUPDATE_SPECIAL_MODE;
using DAXAutoUpdateKey::AUTOUPDATE_STATUS;
using SettingAccess::announceAndSet;
using SettingAccess::checked;

const char AUTOUPDATE_STATUS_KEY[] = "memory/menu/support/softwareupdate/autoupdate_status";
const char AUTOUPDATE_SPECIAL_MODE_KEY[] = "memory/menu/support/softwareupdate/autoupdate_special_mode";
const char BACKGROUND_UPDATE_KEY[] = "db/ep-common/otn_onetime_update";

const int LAST_AUTOUPDATE_STATUS = 7;
const int LAST_AUTOUPDATE_SPECIAL_MODE = 1;
const int LAST_EXTERNAL_APP_VERIFICATION_RESULT = 3;

// Of the consent; 0 is no answer.
const int CONSENT_NOT_REQUIRED = 1;
const int CONSENT_REQUIRED = 2;

const std::vector<std::string> FINALIZING_FLAG_LINES = {
    "This flag file means, that some upgrade might be performed.",
    "Initially it is prepared to use with /opt/kovan-mobile-ui-sh script.",
    "DO NOT USE IT AFTER multi-user target IS STARTED! CHECKING THIS FLAG AFTER multi-user target IS STARTED CREATES "
    "RACE CONDITION."};

void setFlagFile(const path& file, bool set, const std::vector<std::string>& lines = {}) {
    const bool isSet = exists(file);
    if (set && !isSet) {
        Common::IO::writeFlagFile(file, lines);
    } else if (!set && isSet) {
        Common::IO::removeFlagFile(file);
    }
}

// Writes it, or logs that it cannot be done and lets the store's exception pass.
void setQuoted(const char* key, int value) {
    try {
        VConfT<int>(key).set(value);
    } catch (const VConfException&) {
        DAX_LOG(ERR) << "Cannot set the value: \"" << value << "\" in vconf variable: \"" << key << "\"";
        throw;
    }
}

path wocKeyPrefixPath() {
    return IProductPaths::getFileSystemRootPath() / "/usr/share/org.kovan.tv.dax/woc" / "WocKeyPrefix.txt";
}

} // namespace

void CSystemControl::m_setUpgradeStatusFlag(bool success) {
    UpgradeStatusDirectories::set(success);
}

void CSystemControl::m_setUpgradeVersion(const std::string& /*version*/) {}

void CSystemControl::m_removeUpgradeStatusFlag() {
    UpgradeStatusDirectories::remove();
}

boost::optional<bool> CSystemControl::m_getUpgradeStatusFlag() {
    return UpgradeStatusDirectories::get();
}

bool CSystemControl::m_isAutoUpdateOptionActive() {
    try {
        DAX_LOG(DBG) << "Calling isAutoUpdateOptionActive()";
        if (m_isAutoUpdateAlwaysOn()) {
            DAX_LOG(FTL) << "Auto update option is active. (B2B, Enterprise or AutoUpdateAlywaysOn option enable)";
            return true;
        }
        const int value = VConfT<int>("db/menu/support/softwareupdate/autoupdate").get();
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
    announceAndSet<int>("m_setAutoUpdateStatus", AUTOUPDATE_STATUS_KEY, status,
                        "Cannot set AutoUpdate status value in VConf.", BOOST_CURRENT_LOCATION);
}

void CSystemControl::m_setOOBEAcceptedUpdateInfoDataId(const std::string& id) {
    announceAndSet("m_setOOBEAcceptedUpdateInfoDataId", OOBE_ACCEPTED_UPGRADE_INFO_DATA_ID_VCONF_KEY, id,
                   "Cannot set OOBE Accepted Upgrade Version in VConf.", BOOST_CURRENT_LOCATION);
}

void CSystemControl::m_setUSBUIUpdateStatus(const std::string& status) {
    announceAndSet("m_setUSBUIUpdateStatus", "memory/menu/support/softwareupdate/usbui_status", status,
                   "Cannot set USB UI update status value in VConf.", BOOST_CURRENT_LOCATION);
}

void CSystemControl::m_setUSBUIUpdateProgress(int progress) {
    announceAndSet("m_setUSBUIUpdateProgress", "memory/menu/support/softwareupdate/usbui_progress", progress,
                   "Cannot set USB UI update progress status value in VConf.", BOOST_CURRENT_LOCATION);
}

void CSystemControl::m_setAutoUpdateSpecialMode(AUTOUPDATE_SPECIAL_MODE mode) {
    announceAndSet<int>("m_setAutoUpdateSpecialMode", AUTOUPDATE_SPECIAL_MODE_KEY, mode,
                        "Cannot set AutoUpdate mode value in VConf.", BOOST_CURRENT_LOCATION);
}

void CSystemControl::m_setIsBgOTNImportantUpdateEnabled(bool enabled) {
    announceAndSet("m_setIsBgOTNImportantUpdateEnabled", BACKGROUND_UPDATE_KEY, enabled);
}

AUTOUPDATE_STATUS CSystemControl::m_getAutoUpdateStatus() {
    DAX_LOG(INF) << "CSystemControl::m_getAutoUpdateStatus()";
    int value = 0;
    try {
        value = VConfT<int>(AUTOUPDATE_STATUS_KEY).get();
    } catch (const VConfException&) {
        DAX_LOG(ERR) << "Cannot get the value from VConf variable: " << AUTOUPDATE_STATUS_KEY;
        DAX_THROW(GenericException(), errinfo_description("Cannot get AutoUpdate status from VConf."));
    }
    return static_cast<AUTOUPDATE_STATUS>(
        checked(AUTOUPDATE_STATUS_KEY, value, LAST_AUTOUPDATE_STATUS, BOOST_CURRENT_LOCATION));
}

AUTOUPDATE_SPECIAL_MODE CSystemControl::m_getAutoUpdateSpecialMode() {
    DAX_LOG(INF) << "CSystemControl::m_getAutoUpdateSpecialMode()";
    const int value = SettingAccess::getOrDefault(AUTOUPDATE_SPECIAL_MODE_KEY, 0);
    return static_cast<AUTOUPDATE_SPECIAL_MODE>(
        checked(AUTOUPDATE_SPECIAL_MODE_KEY, value, LAST_AUTOUPDATE_SPECIAL_MODE, BOOST_CURRENT_LOCATION));
}

std::string CSystemControl::m_getOOBEAcceptedUpdateInfoDataId() {
    const std::string id = VConfT<std::string>(OOBE_ACCEPTED_UPGRADE_INFO_DATA_ID_VCONF_KEY).getOr("");
    DAX_LOG(INF) << "OOBE Accepted updateInfoDataId is " << id;
    return id;
}

bool CSystemControl::m_getIsBgOTNImportantUpdateEnabled() {
    return SettingAccess::getOrDefault(BACKGROUND_UPDATE_KEY, false);
}

bool CSystemControl::m_wasAnySuccessfulUpgrade() {
    try {
        if (DAXCommon::DebugAndTestParameters::getDebugAndTestParameters().isEmulateWasSuccessfulUpgrade()) {
            DAX_LOG(INF) << "CSystemControl::wasAnySuccessfulUpgrade(): emulateWasSuccessfulUpgrade is set. The vconf "
                            "flag is not checked but considered set.";
            return true;
        }
        const int value = VConfT<int>(SUCCESSFUL_UPGRADE_VCONF_KEY).get();
        DAX_LOG(DBG) << "Success getting info about successful upgrade from vconf. Returned value: " << value;
        DAX_LOG(INF) << "Successful upgrade has " << (value == 1 ? "" : "not ")
                     << "occurred since the last factory reset.";
        return value == 1;
    } catch (...) {
        DAX_LOG(ERR) << "Exception caught while getting wasAnySuccessfulUpgrade value from VConf: "
                     << boost::current_exception_diagnostic_information(true);
        return false;
    }
}

void CSystemControl::m_registerSuccessfulUpgrade() {
    try {
        DAX_LOG(INF) << "CSystemControl::registerSuccessfulUpgrade()";
        setQuoted(SUCCESSFUL_UPGRADE_VCONF_KEY, 1);
    } catch (...) {
        DAX_LOG(ERR) << "Exception caught while saving wasAnySuccessfulUpgrade in VConf: "
                     << boost::current_exception_diagnostic_information(true);
    }
}

ExternalAppVerificationResult CSystemControl::m_getExternalAppVerificationResult() {
    DAX_LOG(INF) << "CSystemControl::m_getExternalAppVerificationResult()";
    int value = 0;
    try {
        value = VConfT<int>(EXT_APP_VERIFICATION_RESULT_VCONF_KEY).get();
    } catch (const VConfException&) {
        DAX_LOG(ERR) << "Cannot get the value from vconf variable: " << EXT_APP_VERIFICATION_RESULT_VCONF_KEY;
        DAX_THROW(GenericException(), errinfo_description("Cannot get verification result for external application."));
    }
    if (value < 0 || value > LAST_EXTERNAL_APP_VERIFICATION_RESULT) {
        DAX_LOG(ERR) << "Wrong value: " << value << " in vconf variable: " << EXT_APP_VERIFICATION_RESULT_VCONF_KEY;
        DAX_THROW(GenericException(),
                  "Cannot get verification result for external application - invalid value stored in vconf: " << value);
    }
    return static_cast<ExternalAppVerificationResult>(value);
}

void CSystemControl::m_setExternalAppVerificationResult(ExternalAppVerificationResult result) {
    try {
        setQuoted(EXT_APP_VERIFICATION_RESULT_VCONF_KEY, static_cast<int>(result));
    } catch (const VConfException&) {
        DAX_THROW(GenericException(), errinfo_description("Cannot save verification result for external application."));
    }
}

boost::optional<std::string> CSystemControl::m_getPendingExternalAppClientID() {
    try {
        DAX_LOG(INF) << "CSystemControl::m_getPendingExternalAppClientID()";
        const std::string id = VConfT<std::string>(EXT_APP_CLIENT_ID_VCONF_KEY).get();
        return id.empty() ? boost::none : boost::optional<std::string>(id);
    } catch (...) {
        DAX_LOG(ERR) << "Exception caught while getting pending External App ID from VConf: "
                     << boost::current_exception_diagnostic_information(true);
        return boost::none;
    }
}

void CSystemControl::m_setPendingExternalAppClientID(boost::optional<std::string> id) {
    if (id && id->empty()) {
        DAX_THROW(GenericException(), errinfo_description("Cannot set empty string as client ID."));
    }
    try {
        VConfT<std::string>(EXT_APP_CLIENT_ID_VCONF_KEY).set(id.value_or(""));
    } catch (const VConfException&) {
        DAX_LOG(ERR) << "Cannot set the value: \"" << id.value_or("<null>")
                     << "\" in vconf variable: " << EXT_APP_CLIENT_ID_VCONF_KEY;
        DAX_THROW(GenericException(), errinfo_description("Cannot save client ID for external application."));
    }
}

void CSystemControl::m_setDAXFinalizingUpgradeFlag(bool set) {
    DAX_LOG(INF) << "Setting DAX finalizing upgrade flag: " << set << ".";
    setFlagFile(IProductPaths::getDAXFinalizingUpgradeFlagPath(), set, FINALIZING_FLAG_LINES);
}

void CSystemControl::m_setDAXResetFlag(bool set) {
    DAX_LOG(INF) << "Setting DAX reset flag: " << set << ".";
    setFlagFile(IProductPaths::getDAXFactoryResetFlagPath(), set);
}

bool CSystemControl::m_getDAXResetFlag() {
    const bool isSet = exists(IProductPaths::getDAXFactoryResetFlagPath());
    DAX_LOG(INF) << "Getting state of DAX reset flag: " << isSet << ".";
    return isSet;
}

void CSystemControl::m_setMonopolyFlag(bool on) {
    try {
        DAX_LOG(INF) << "Setting flag indicating that DAXMainApp is running to: " << on;
        VConfT<bool>(MONOPOLY_MODE_INFO_VCONF_KEY).set(on);
    } catch (...) {
        DAX_LOG(ERR) << "Failed to set flag indicating that DAXMainApp is running: "
                     << boost::current_exception_diagnostic_information(true);
    }
}

void CSystemControl::m_setModifiedPartitionsMarker(const std::string& /*unused*/) {
    ModifiedPartitionsMarkers::set();
}

bool CSystemControl::m_isModifiedPartitionsMarkerSet() {
    return ModifiedPartitionsMarkers::isAnySet();
}

void CSystemControl::m_removeModifiedPartitionsMarker() {
    ModifiedPartitionsMarkers::remove();
}

bool CSystemControl::m_isPreUpdateConsentSet() {
    return VConfT<int>(VCONF_KEY_PREUPDATE_CONSENT).getOr(0) != 0;
}

bool CSystemControl::m_isPreUpdateConsentRequired() {
    if (m_isAutoUpdateAlwaysOn()) {
        DAX_LOG(INF) << "TBM, B2B or AUDIO device -> force to false";
        return false;
    }
    try {
        return (VConfT<int>(VCONF_KEY_PREUPDATE_CONSENT).get() & ~CONSENT_REQUIRED) == 0;
    } catch (const VConfException&) {
        DAX_LOG(ERR) << "Error while getting pre-update consent value"
                     << boost::current_exception_diagnostic_information(true);
        return true;
    }
}

void CSystemControl::m_setPreUpdateConsentRequired(bool required) {
    try {
        VConfT<int>(VCONF_KEY_PREUPDATE_CONSENT).set(required ? CONSENT_REQUIRED : CONSENT_NOT_REQUIRED);
    } catch (const VConfException&) {
        DAX_LOG(ERR) << "Error while saving pre-update consent value"
                     << boost::current_exception_diagnostic_information(true);
    }
}

std::string CSystemControl::m_getAutoUpgradeTriggerKey() {
    return VCONF_KEY_AUTOUPGRADE_TRIGGER_KEY;
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

std::string CSystemControl::m_getWocOTNModelPrefix() {
    const path file = wocKeyPrefixPath();
    if (!exists(file)) {
        DAX_THROW(GenericException(), "WOC OTN Model prefix file does not exist: " << file.string());
    }
    try {
        Common::IO::FileStream stream(file);
        stream.open();
        const std::string prefix = stream.readAllText(Common::IO::SMALL_CHUNK_SIZE);
        DAX_LOG(INF) << "Returning WOC OTN Model prefix: " << prefix;
        return prefix;
    } catch (const Common::IO::IOExceptions::IOStreamsException&) {
        DAX_LOG(ERR) << boost::current_exception_diagnostic_information(true);
        DAX_THROW(GenericException(), errinfo_description("Error when reading WOC OTN Model prefix from file."));
    }
}

} // namespace DAX::Platform
