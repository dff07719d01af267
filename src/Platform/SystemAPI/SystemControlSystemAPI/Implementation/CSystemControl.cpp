#include "Platform/SystemAPI/SystemControlSystemAPI/Implementation/CSystemControl.h"

#include <cerrno>
#include <chrono>
#include <fstream>
#include <thread>

#include <boost/exception/diagnostic_information.hpp>
#include <boost/exception/errinfo_errno.hpp>
#include <boost/exception/errinfo_nested_exception.hpp>
#include <boost/filesystem/operations.hpp>
#include <device_power.h>
#include <sys/resource.h>
#include <system_info.h>
#include <unistd.h>

#include "Common/Logging/LoggingStream.h"
#include "Common/PlatformDependent/Sync.h"
#include "Debug/DebugAndTestParameters/DebugAndTestParameters.h"
#include "Platform/Product/IProductInfo.h"
#include "Platform/ProductPaths/IProductPaths.h"
#include "Platform/SystemAPI/FactorySystemAPI/IFactorySettings.h"
#include "Platform/SystemAPI/SystemControlSystemAPI/PowerAPIException.h"
#include "Platform/SystemAPI/SystemInfoSystemAPI/ISystemInfo.h"
#include "Platform/SystemAPI/VconfSystemAPI/IVConf.h"
#include "Utility/Utils/ErrInfoStream.h"
#include "Utility/Utils/GenericException.h"

namespace DAX::Platform {
namespace {

using boost::filesystem::path;
using Common::Utils::errinfo_description;
using Common::Utils::errinfo_errorcode;
using Common::Utils::errinfo_path;
using Common::Utils::GenericException;
using DAXCommon::DebugAndTestParameters;

const int NORMAL_REASON = 12;
const int FACTORY_RESET_REASON = 14;
const int FORCE_BIT = 0x20000000;

const int WAKE_UP_REASON_DAX = 5;
const int WAKE_UP_REASON_MOBILE_BT = 41;

const unsigned int NUMBER_OF_POWER_STATES = 5;

const char POWER_REQUEST_COLD_SHUTDOWN_NAME[] = "org.kovan.tv.dax";

const int MAINLAND_CHINA = 24; // of SYSTEM_INFO_KEY_SALES_REGION
const int FOREGROUND_NICENESS = 0;
const int BACKGROUND_NICENESS = 19;

// Makes the calling thread sleep for as long as the debug parameters ask for before the device goes down.
void delay(const char* beforeWhat) {
    const auto seconds =
        DebugAndTestParameters::getDebugAndTestParameters().getCustomIntParam("CSystemControl::delayedShutdown");
    if (seconds) {
        DAX_LOG(INF) << "Waiting " << *seconds << beforeWhat;
        std::this_thread::sleep_for(std::chrono::seconds(*seconds));
    }
}

// The file by which this stack asks for standalone mode.
const path& m_getStandaloneFlagPath() {
    static const path flag = IProductPaths::getDAXPartitionPath() / "STANDALONE";
    return flag;
}

// The file that the boot scripts keep while the device is in standalone mode.
path standaloneStatePath() {
    return IProductPaths::getFileSystemRootPath() / "/run/.standalone";
}

// Returns the errno value of the failure, 0 without one.
int writeStandaloneRequest() {
    errno = 0;
    std::ofstream file(m_getStandaloneFlagPath().string());
    if (file) {
        file << "standalone\n";
        file.close();
        const int failure = file ? 0 : errno;
        Common::PlatformDependent::system_sync();
        return failure;
    }
    return errno;
}

bool isSettingOne(const VConfKey<int>& key) {
    return readOrDefault(key) == 1;
}

} // namespace

const char* CSystemControl::m_DAXRevisionDescription() {
    return "Changelist: 0, EmulatedProductVersion: ., UI_TYPE=EFL_UI, CMakeTime: 1764727676";
}

void CSystemControl::m_shutdown() {
    m_shutdown(NORMAL_REASON);
}

void CSystemControl::m_forceShutdown() {
    DAX_LOG(INF) << "Power state lock will be ignored.";
    m_shutdown(NORMAL_REASON | FORCE_BIT);
}

void CSystemControl::m_shutdown(int reason) {
    DAX_LOG(FTL) << "shutdown: " << reason;
    delay(" seconds before shutdown.");
    const int result = device_power_request_poweroff(reason);
    DAX_LOG(INF) << "Request poweroff result: " << result;
    if (result != 0) {
        DAX_THROW(PowerAPIException(), errinfo_description("device_power_request_poweroff failed")
                                           << errinfo_errorcode(result));
    }
}

void CSystemControl::m_reboot() {
    m_reboot(NORMAL_REASON);
}

void CSystemControl::m_rebootWithFactoryResetReason() {
    m_reboot(FACTORY_RESET_REASON);
}

void CSystemControl::m_reboot(int reason) {
    DAX_LOG(FTL) << "reboot: " << reason;
    if (DebugAndTestParameters::getDebugAndTestParameters().isNoRebootFlag()) {
        DAX_LOG(INF) << "CSystemControl::reboot(): no reboot performed because NoRebootFlag is set.";
        return;
    }
    delay(" seconds before reboot.");
    m_setColdShutdown();
    const int result = device_power_request_reboot(reason | FORCE_BIT);
    DAX_LOG(INF) << "Request restart result: " << result;
    if (result != 0) {
        DAX_THROW(PowerAPIException(), errinfo_description("device_power_request_reboot failed")
                                           << errinfo_errorcode(result));
    }
}

void CSystemControl::m_setColdShutdown() {
    m_setColdShutdown(POWER_REQUEST_COLD_SHUTDOWN_NAME);
}

void CSystemControl::m_setColdShutdown(const std::string& name) {
    try {
        DAX_LOG(INF) << "Setting cold shutdown flag.";
        VConfT<std::string>(POWER_COLD_SHUTDOWN_VCONF_KEY).set(name);
        DAX_LOG(ERR) << "power_suspend flag set: " << POWER_COLD_SHUTDOWN_VCONF_KEY << " = " << name
                     << ". Cold shutdown will be performed as next shutdown.";
    } catch (...) {
        DAX_THROW(GenericException(), boost::errinfo_nested_exception(boost::current_exception()));
    }
}

int CSystemControl::m_setWakeUpReason(int reason) {
    const int result = device_power_set_wakeup_reason(reason);
    if (result < 0) {
        DAX_THROW(PowerAPIException(), errinfo_description("device_power_get_wakeup_reason() failed")
                                           << errinfo_errorcode(result));
    }
    DAX_LOG(INF) << "Wake-up has been set to " << reason << ", with result: " << result;
    return result;
}

int CSystemControl::m_getWakeUpReason() {
    const int reason = device_power_get_wakeup_reason();
    if (reason < 0) {
        DAX_THROW(PowerAPIException(), errinfo_description("device_power_get_wakeup_reason() failed")
                                           << errinfo_errorcode(reason));
    }
    DAX_LOG(INF) << "Wake-up reason = " << reason << ".";
    return reason;
}

bool CSystemControl::m_isWakeUpReasonDAX() {
    return m_getWakeUpReason() == WAKE_UP_REASON_DAX;
}

bool CSystemControl::m_isWakeUpReasonStandbyScan() {
    return false;
}

bool CSystemControl::m_isWakeUpReasonMobileBT() {
    return m_getWakeUpReason() == WAKE_UP_REASON_MOBILE_BT;
}

bool CSystemControl::m_isInStandaloneMode() {
    if (exists(standaloneStatePath())) {
        return true;
    }
    if (exists(m_getStandaloneFlagPath())) {
        DAX_LOG(INF) << "STANDALONE flag file already exists, but we are not in standalone mode yet.";
    }
    return false;
}

void CSystemControl::m_requestStandaloneMode() {
    if (exists(m_getStandaloneFlagPath())) {
        DAX_LOG(INF) << "STANDALONE flag file already exists.";
        return;
    }
    const int failure = writeStandaloneRequest();
    if (!exists(m_getStandaloneFlagPath())) {
        DAX_THROW(GenericException(), "Error during creating file." << errinfo_path(m_getStandaloneFlagPath())
                                                                    << boost::errinfo_errno(failure));
    }
    DAX_LOG(FTL) << "Successfully requested STANDALONE mode.";
}

bool CSystemControl::m_wasStandaloneModeRequested() {
    return exists(m_getStandaloneFlagPath());
}

void CSystemControl::m_quitStandaloneMode() {
    if (exists(m_getStandaloneFlagPath())) {
        remove(m_getStandaloneFlagPath());
    } else {
        DAX_LOG(INF) << "STANDALONE flag file doesnt exists.";
    }
}

DAXCommon::PowerMode CSystemControl::m_getCurrentPowerMode() {
    const int state = device_power_get_state();
    if (static_cast<unsigned int>(state) >= NUMBER_OF_POWER_STATES) {
        DAX_THROW(PowerAPIException(), errinfo_description("device_power_get_state() failed")
                                           << errinfo_errorcode(state));
    }
    return static_cast<DAXCommon::PowerMode>(state);
}

void CSystemControl::m_setCurrentPowerMode(DAXCommon::PowerMode mode, bool flag) {
    if (mode >= DAXCommon::POWER_MODE_POWER_OFF) {
        DAX_THROW(PowerAPIException(), errinfo_description("wrong power mode") << errinfo_errorcode(mode));
    }
    device_power_set_state(mode, flag ? 1 : 0);
}

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

bool CSystemControl::m_isCellularConnectionAllowed() {
    return isSettingOne(VCONF_KEY_USE_CELLULAR);
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

bool CSystemControl::m_setProcessPriority(ProcessPriority priority) {
    const bool foreground = priority == ProcessPriority::FOREGROUND;
    const int result =
        setpriority(PRIO_PROCESS, static_cast<id_t>(getpid()), foreground ? FOREGROUND_NICENESS : BACKGROUND_NICENESS);
    DAX_LOG(INF) << (foreground ? "Setting priority level to FOREGROUND, returnCode: "
                                : "Setting priority level to BACKGROUND, returnCode: ")
                 << result;
    return result == 0;
}

bool CSystemControl::m_isPremiumModel() {
    return IProductInfo::getBoardType() != "Marlow9q";
}

bool CSystemControl::m_isAccountSiginMandatory() {
    DAX_LOG(DBG) << "Calling m_isAccountSiginMandatory()";
    return false;
}

int CSystemControl::m_getDetailsNotificationType() {
    const int type =
        DebugAndTestParameters::getDebugAndTestParameters().getCustomIntParam("CSystemControl::notiDetailsType", 0);
    DAX_LOG(INF) << "Notification type for details popup is: " << type;
    return type;
}

bool CSystemControl::m_isAutoUpdateAlwaysOn() {
    return m_isB2BTv() || IProductInfo::isTBMModel();
}

bool CSystemControl::m_isMaintenanceMode() {
    const bool active = isSettingOne(VCONF_KEY_MAINTENANCE_MODE);
    DAX_LOG(INF) << "CSystemControl::m_isMaintenanceMode returns value: " << active;
    return active;
}

bool CSystemControl::m_isRetailMode() {
    const bool active = isSettingOne(VCONF_KEY_RETAIL_MODE);
    DAX_LOG(INF) << "CSystemControl::m_isRetailMode returns value: " << active;
    return active;
}

} // namespace DAX::Platform
