#include "Platform/SystemAPI/FactorySystemAPI/Implementation/CFactorySettings.h"

#include <string>

#include <plantcfg.h>

#include "Common/Logging/LoggingStream.h"
#include "Debug/DebugAndTestParameters/DebugAndTestParameters.h"
#include "Platform/SystemAPI/FactorySystemAPI/IFactorySettings.h"
#include "Platform/SystemAPI/FactorySystemAPI/Implementation/FactoryItems.h"
#include "Utility/Utils/ErrInfoStream.h"
#include "Utility/Utils/GenericException.h"

namespace DAX::Platform {
namespace {

using DAXCommon::DebugAndTestParameters;

const int PLANTCFG_SUCCESS = 1;
const int LAST_ZONE = 'Z' - 'A' + 1;
const int NO_ZONE = 'T' - 'A' + 1; // the one letter that names no zone

boost::optional<bool> overridden(const char* parameter) {
    return DebugAndTestParameters::getDebugAndTestParameters().getCustomBoolParam(parameter);
}

bool isOtnEnabled(system_info_key_e key) {
    if (const boost::optional<bool> enabled = overridden("IFactorySettings::overrideOTNEnabled")) {
        DAX_LOG(INF) << "OTNEnabled overridden to: " << *enabled;
        return *enabled;
    }
    return getIntFromFactory(key) != 0;
}

// Takes the result of a platform call, where 1 means success.
void throwIfFailed(int result, const std::string& function, const boost::source_location& site) {
    if (result == PLANTCFG_SUCCESS) {
        return;
    }
    const std::string failure = "Factory API returned an error from function " + function;
    DAX_LOG(ERR) << failure << ": " << result;
    DAX_THROW_AT(site, Common::Utils::GenericException(),
                 Common::Utils::errinfo_description(failure + ".") << Common::Utils::errinfo_errorcode(result));
}

int readEnum(int (*function)(int*), const char* name, const boost::source_location& site) {
    int value = 0;
    throwIfFailed(function(&value), name, site);
    DAX_LOG(INF) << name << " called successfully: " << value;
    return value;
}

} // namespace

bool CFactorySettingsAPIImpl::isRetailTvOtnEnabled() {
    const bool enabled = isOtnEnabled(SYSTEM_INFO_KEY_OTN_ONOFF);
    DAX_LOG(INF) << "isRetailTvOtnEnabled(): " << enabled;
    return enabled;
}

bool CFactorySettingsAPIImpl::isB2BTvOtnEnabled() {
    const bool enabled = isOtnEnabled(SYSTEM_INFO_KEY_HOTEL_OTN_UPDATE);
    DAX_LOG(INF) << "isB2BTvOtnEnabled(): " << enabled;
    return enabled;
}

boost::optional<char> CFactorySettingsAPIImpl::getOTNZone() {
    const int zone = getIntFromFactory(SYSTEM_INFO_KEY_OTN_TESTSERVER);
    if (zone < 1) {
        return boost::none;
    }
    if (zone > LAST_ZONE || zone == NO_ZONE) {
        DAX_LOG(INF) << "Invalid zone code: " << zone;
        return boost::none;
    }
    return static_cast<char>('A' + zone - 1);
}

bool CFactorySettingsAPIImpl::isDAXFailTestActive() {
    if (const boost::optional<bool> active = overridden("IFactorySettings::overrideDAXFailTestActive")) {
        DAX_LOG(INF) << "DAXFailTestActive overridden to: " << *active;
        return *active;
    }
    const bool active = getIntFromFactory(SYSTEM_INFO_KEY_DAX_FAIL_TEST) != 0;
    DAX_LOG(INF) << "IFactorySettings::isDAXFailTestActive(): " << active;
    return active;
}

int CFactorySettingsAPIImpl::getOTNServerType() {
    // Read in any case: the log shows the device's value even when the debug parameter overrides it.
    const int type = getIntFromFactory(SYSTEM_INFO_KEY_OTN_SERVER_TYPE);
    if (DebugAndTestParameters::getDebugAndTestParameters().isUseOTNTestServer()) {
        return IFactorySettings::OTN_SERVER_1;
    }
    if (type == 0) {
        return IFactorySettings::OTN_SERVER_2;
    }
    if (type != 1) {
        DAX_LOG(INF) << "Invalid OTN server type: " << type << ". Using test server.";
    }
    return IFactorySettings::OTN_SERVER_0;
}

bool CFactorySettingsAPIImpl::useShortOTATransactionTimeout() {
    const bool isSet = getIntFromFactory(SYSTEM_INFO_KEY_DAX_DURATION) != 0;
    DAX_LOG(INF) << (isSet ? "ID_DAX_DURATION option is set in Factory settings. Using short OTA timeout."
                           : "ID_DAX_DURATION option is not set in Factory settings. Using normal OTA timeout.");
    return isSet;
}

bool CFactorySettingsAPIImpl::isOTAEnabled() {
    int value = 0;
    const bool enabled = system_info_get_value_int(SYSTEM_INFO_KEY_OTA_SUPPORT, &value) == 0 && value == 1;
    DAX_LOG(INF) << (enabled ? "Factory settings supports OTA" : "Factory settings doesn't support OTA");
    return enabled;
}

void CFactorySettingsAPIImpl::factoryReset() {
    DAX_LOG(INF) << "Calling plantcfg_reset from FactoryAPI.";
    throwIfFailed(plantcfg_reset(0), "plantcfg_reset", BOOST_CURRENT_LOCATION);
    DAX_LOG(INF) << "plantcfg_reset called successfully.";
}

void CFactorySettingsAPIImpl::prepareOsUpgrade() {
    DAX_LOG(INF) << "Factory os upgrade api is disabled.";
}

bool CFactorySettingsAPIImpl::isFastBootInProductionMode() {
    const bool isOn = getIntFromFactory(SYSTEM_INFO_KEY_FAST_USB_BOOTING) != 0;
    DAX_LOG(INF) << "IFactorySettings::isFastBootInProductionMode(): " << isOn;
    return isOn;
}

int CFactorySettingsAPIImpl::getModelEnum() {
    return readEnum(plantcfg_get_model_enum, "plantcfg_get_model_enum", BOOST_CURRENT_LOCATION);
}

int CFactorySettingsAPIImpl::getLocalsetEnum() {
    return readEnum(plantcfg_get_localset_enum, "plantcfg_get_localset_enum", BOOST_CURRENT_LOCATION);
}

} // namespace DAX::Platform
