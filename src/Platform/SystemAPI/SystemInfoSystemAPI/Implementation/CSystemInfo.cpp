#include "Platform/SystemAPI/SystemInfoSystemAPI/Implementation/CSystemInfo.h"

#include <map>

#include <boost/exception/diagnostic_information.hpp>

#include "Common/Logging/LoggingStream.h"
#include "Platform/Product/IProductInfo.h"
#include "Platform/SystemAPI/FactorySystemAPI/IFactorySettings.h"
#include "Platform/SystemAPI/VconfSystemAPI/IVConf.h"
#include "Utility/Utils/ErrInfoStream.h"
#include "Utility/Utils/GenericException.h"

namespace DAX::Platform {
namespace {

using Common::Utils::errinfo_description;
using Common::Utils::GenericException;

const std::size_t COUNTRY_CODE_LENGTH = 2;

// Logs what the store holds, for debugging, and returns it.
template <class T>
T debugged(const char* text, const T& value) {
    DAX_LOG(DBG) << text << value;
    return value;
}

std::string notEmpty(const std::string& value, const char* failure, const boost::source_location& site) {
    if (value.empty()) {
        DAX_THROW_AT(site, GenericException(), errinfo_description(failure));
    }
    return value;
}

enum class Told { FAILURE, FAILURE_AND_DIAGNOSTIC };

// A failed write is only logged.
template <class T>
void setOrLog(const VConfKey<T>& key, const T& value, const char* failure, Told told = Told::FAILURE) {
    try {
        VConfT<T>(key).set(value);
    } catch (const VConfException&) {
        DAX_LOG(ERR) << failure << (told == Told::FAILURE ? "" : boost::current_exception_diagnostic_information(true));
    }
}

std::string submodelOrModel(const VConfKeyWithDefault<std::string>& key) {
    const std::string submodel = readOrDefault(key);
    return submodel.empty() ? IProductInfo::getModelString() : submodel;
}

} // namespace

std::string CSystemInfo::m_getDuid() {
    return notEmpty(debugged("Debug only log: DUID is ", VConfT<std::string>(VCONF_KEY_DUID).get()),
                    "DUID value taken from vconf is empty", BOOST_CURRENT_LOCATION);
}

std::string CSystemInfo::m_getAtoken() {
    return debugged("Debug only log: Atoken is ", VConfT<std::string>(VCONF_KEY_ATOKEN).get());
}

std::string CSystemInfo::m_getOtnUrl() {
    return debugged("Debug only log: OTN URL is ", readOrDefault(VCONF_KEY_OTN_URL));
}

bool CSystemInfo::m_isTermsConditionsAccepted() {
    const int value = VConfT<int>(VCONF_KEY_TERMS_ACCEPTED).get();
    DAX_LOG(DBG) << "Terms&Conditions: " << value;
    return value == 1;
}

std::string CSystemInfo::m_getFirmwareVersion() {
    return notEmpty(debugged("Debug only log: FIRMWARE is ", VConfT<std::string>(VCONF_KEY_FIRMWARE_VERSION).get()),
                    "Firmware value taken from vconf is empty", BOOST_CURRENT_LOCATION);
}

std::string CSystemInfo::m_getCountryCode() {
    std::string code = debugged("Debug only log: CountryCode is ", readOrDefault(VCONF_KEY_COUNTRY_CODE));
    if (code.size() != COUNTRY_CODE_LENGTH) {
        DAX_LOG(WRN) << "CountryCode value taken from vconf has not expected length";
        return {};
    }
    return code;
}

std::string CSystemInfo::m_getFlashedSubModelString() {
    return submodelOrModel(VCONF_FLASHED_SUB_MODEL_STRING_KEY);
}

void CSystemInfo::m_setFlashedSubModelString(const std::string& submodel) {
    setOrLog(VCONF_FLASHED_SUB_MODEL_STRING_KEY, submodel, "Error while saving flashed submodel string",
             Told::FAILURE_AND_DIAGNOSTIC);
}

std::string CSystemInfo::m_getSelectedSubModelString(ISystemInfo::ZoneType zone) {
    std::string submodel = submodelOrModel(VCONF_SELECTED_SUB_MODEL_STRING_KEY);
    const boost::optional<char> letter = IFactorySettings::getOTNZone();
    if (zone == ISystemInfo::WITH_OTN_ZONE && letter && !submodel.empty()) {
        submodel.front() = *letter;
    }
    return submodel;
}

std::string CSystemInfo::m_getSelectedSubModelOrEmptyString() {
    return readOrDefault(VCONF_SELECTED_SUB_MODEL_STRING_KEY);
}

void CSystemInfo::m_setSelectedSubModelString(const std::string& submodel) {
    if (submodel.empty()) {
        DAX_LOG(ERR) << "Not expected submodel string, should not be empty here";
        return;
    }
    std::string selected = submodel;
    const bool isInZone = IFactorySettings::getOTNZone().has_value();
    const std::string model = IProductInfo::getModelString();
    if (isInZone) { // the user chose from names with the zone's letter
        selected.front() = model.at(0);
    }
    setOrLog(VCONF_SELECTED_SUB_MODEL_STRING_KEY, selected == model ? std::string() : selected,
             "Error while saving selected submodel string", Told::FAILURE_AND_DIAGNOSTIC);
}

bool CSystemInfo::m_isAnySubmodelSelected() {
    return !readOrDefault(VCONF_SELECTED_SUB_MODEL_STRING_KEY).empty();
}

bool CSystemInfo::m_isAnySubmodelFound() {
    return readOrDefault(VCONF_IS_ANY_SUBMODEL_STRING_KEY);
}

void CSystemInfo::m_setAnySubmodelFlag(bool found) {
    setOrLog(VCONF_IS_ANY_SUBMODEL_STRING_KEY, found, "Error while saving any submodel flag");
}

void CSystemInfo::m_saveCurrentVersionString() {
    DAX_LOG(INF) << "CSystemInfo::m_saveCurrentVersionString()";
    const std::string version = IProductInfo::getVersionString();
    try {
        VConfT<std::string>(UPGRADE_VERSION_KEY).set(version);
    } catch (const VConfException&) {
        DAX_LOG(ERR) << "Cannot set value for VConf key: " << UPGRADE_VERSION_KEY;
        DAX_THROW(GenericException(), errinfo_description("Cannot set save upgrade_version value in VConf."));
    }
    DAX_LOG(INF) << "Current version string: " << version << " was set correctly in " << UPGRADE_VERSION_KEY;
}

std::string CSystemInfo::m_loadCurrentVersionString() {
    DAX_LOG(INF) << "CSystemInfo::m_loadCurrentVersionString()";
    try {
        std::string version = VConfT<std::string>(UPGRADE_VERSION_KEY).get();
        DAX_LOG(INF) << "Current version string: " << version << " was get correctly from " << UPGRADE_VERSION_KEY;
        return version;
    } catch (const VConfException&) {
        DAX_LOG(ERR) << "Cannot get the value from VConf variable: " << UPGRADE_VERSION_KEY;
        DAX_THROW(GenericException(), errinfo_description("Cannot get upgrade_version from VConf."));
    }
}

void CSystemInfo::m_setMsdFolderPath(const std::string& folder) {
    setOrLog(VCONF_KEY_MSD_PATH, folder, "Error while saving MSD folder path string");
}

std::string CSystemInfo::m_getMsdFolderPath() {
    return readOrDefault(VCONF_KEY_MSD_PATH);
}

void CSystemInfo::m_setMsdVersions(const std::string& versions) {
    setOrLog(VCONF_KEY_MSD_VERSIONS, versions, "Error while saving MSD versions string");
}

std::string CSystemInfo::m_getMsdVersions() {
    return readOrDefault(VCONF_KEY_MSD_VERSIONS);
}

bool CSystemInfo::m_isHighContrastMode() {
    return debugged("Debug only log: highcontrast is ", VConfT<int>(VCONF_KEY_HIGH_CONTRAST).get()) != 0;
}

int CSystemInfo::m_getAccessibilityActCustomTimeout(int defaultSeconds) {
    static const std::map<int, int> minutesInSeconds = {{1, 60}, {2, 120}, {5, 300}, {10, 600}};
    const int kind = readOrDefault(VCONF_KEY_TIME_TO_TAKE_ACTION);
    DAX_LOG(DBG) << "AccessibilityAct timeout type: " << kind;
    if (kind == 0) {
        return defaultSeconds;
    }
    const auto found = minutesInSeconds.find(kind);
    if (found == minutesInSeconds.end()) {
        DAX_LOG(ERR) << "Invalid AccessibilityAct timeout type: " << kind << ". Returning default value.";
        return defaultSeconds;
    }
    return found->second;
}

} // namespace DAX::Platform
