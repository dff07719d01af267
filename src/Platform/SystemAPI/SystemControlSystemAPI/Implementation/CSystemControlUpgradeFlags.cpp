#include <string>
#include <vector>

#include <boost/exception/diagnostic_information.hpp>
#include <boost/filesystem/operations.hpp>

#include "Common/IO/FlagFile.h"
#include "Common/Logging/LoggingStream.h"
#include "Debug/DebugAndTestParameters/DebugAndTestParameters.h"
#include "Platform/ProductPaths/IProductPaths.h"
#include "Platform/SystemAPI/SystemControlSystemAPI/Implementation/CSystemControl.h"
#include "Platform/SystemAPI/SystemControlSystemAPI/Implementation/ModifiedPartitionsMarkers.h"
#include "Platform/SystemAPI/SystemControlSystemAPI/Implementation/SettingAccess.h"
#include "Platform/SystemAPI/SystemControlSystemAPI/Implementation/UpgradeStatusDirectories.h"
#include "Platform/SystemAPI/VconfSystemAPI/IVConf.h"

namespace DAX::Platform {
namespace {

using boost::filesystem::path;

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
        SettingAccess::setQuoted(SUCCESSFUL_UPGRADE_VCONF_KEY, 1);
    } catch (...) {
        DAX_LOG(ERR) << "Exception caught while saving wasAnySuccessfulUpgrade in VConf: "
                     << boost::current_exception_diagnostic_information(true);
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

} // namespace DAX::Platform
