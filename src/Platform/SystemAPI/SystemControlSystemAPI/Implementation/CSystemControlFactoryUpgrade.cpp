#include <algorithm>
#include <string>
#include <utility>

#include <boost/exception/diagnostic_information.hpp>
#include <boost/filesystem/operations.hpp>

#include "Common/IO/RegularFile.h"
#include "Common/Logging/LoggingStream.h"
#include "Platform/SystemAPI/SystemControlSystemAPI/Implementation/CSystemControl.h"
#include "Platform/SystemAPI/USBSystemAPI/IUSBDeviceManager.h"

namespace DAX::Platform {
namespace {

using boost::filesystem::path;

const char FACTORY_UPGRADE_FLAG_FILENAME[] = "DAX_AUTO_FLAG";

// No flag needs more. Without a limit, anybody who can plug a stick in could fill the memory.
const std::size_t MOST_BYTES = std::size_t{64} * 1024;

std::string withoutLineEnds(std::string text) {
    text.erase(std::remove_if(text.begin(), text.end(), [](char c) { return c == '\r' || c == '\n'; }), text.end());
    return text;
}

// The content, without line ends, and the path of the first flag file that is found on a USB device; both empty when
// there is none.
std::pair<std::string, std::string> getFactoryUpgradeFileContent() {
    for (const path& mountPath : IUSBDeviceManager::getUSBMountPaths()) {
        const path flagFile = mountPath / FACTORY_UPGRADE_FLAG_FILENAME;
        if (!exists(flagFile)) {
            continue;
        }
        const std::string content = withoutLineEnds(Common::IO::RegularFile(flagFile).readText(MOST_BYTES));
        DAX_LOG(INF) << "Found Factory Upgrade Flag File: '" << flagFile.string() << "' with content: '" << content
                     << "'";
        return {content, flagFile.string()};
    }
    return {};
}

} // namespace

bool CSystemControl::m_isFactoryUpgradeEnabled() {
    try {
        return getFactoryUpgradeFileContent().first == "1";
    } catch (...) {
        DAX_LOG(ERR) << "CSystemControlCommon::isFactoryUpgradeEnabled Exception occured: "
                     << boost::current_exception_diagnostic_information(true);
        return false;
    }
}

bool CSystemControl::m_isSequentialUpgradeEnabled() {
    const path mountPath = m_getSequentialUpgradeDeviceMntPath();
    if (mountPath.empty()) {
        DAX_LOG(INF) << "There is no flag file for Sequential upgrade.";
        return false;
    }
    DAX_LOG(INF) << "There is flag file for Sequential upgrade: " << mountPath.string();
    return true;
}

path CSystemControl::m_getSequentialUpgradeDeviceMntPath() {
    try {
        const auto [content, flagFile] = getFactoryUpgradeFileContent();
        return content == "AUTO" ? path(flagFile).parent_path() : path();
    } catch (...) {
        DAX_LOG(ERR) << "CSystemControl::getSequentialUpgradeDeviceMntPath Exception occured: "
                     << boost::current_exception_diagnostic_information(true);
        return {};
    }
}

} // namespace DAX::Platform
