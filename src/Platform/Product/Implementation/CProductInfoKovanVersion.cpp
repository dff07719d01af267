#include <fstream>
#include <string>

#include <boost/filesystem/operations.hpp>

#include "Common/Logging/LoggingStream.h"
#include "Platform/Product/IProductInfo.h"
#include "Platform/ProductPaths/IProductPaths.h"
#include "Utility/Utils/ErrInfoStream.h"
#include "Utility/Utils/GenericException.h"

namespace DAX::Platform {
namespace {

using boost::filesystem::path;
using Common::Utils::errinfo_description;
using Common::Utils::GenericException;

// The value of the first line with "VERSION" and a "=".
std::string versionIn(std::istream& file) {
    for (std::string line; std::getline(file, line);) {
        const std::size_t equals = line.find('=');
        if (line.find("VERSION") != std::string::npos && equals != std::string::npos) {
            std::string value = line.substr(equals + 1);
            DAX_LOG(INF) << "Kovan version is: " << value;
            return value;
        }
    }
    DAX_LOG(ERR) << "Unable to parse kovan version from file";
    return {};
}

std::string versionOf(const path& releaseFile) {
    if (!exists(releaseFile)) {
        DAX_LOG(ERR) << "Unable to locate kovan_release file";
        return {};
    }
    std::ifstream file(releaseFile.string());
    if (!file) {
        DAX_LOG(ERR) << "Unable to read kovan_release file";
        return {};
    }
    return versionIn(file);
}

} // namespace

std::string IProductInfo::getKovanVersionString() {
    std::string version = versionOf(IProductPaths::getFlashDeviceRootPath() / "/etc" / "kovan-release");
    if (version.empty()) {
        DAX_THROW(GenericException(), errinfo_description("Could not get kovan version from /etc/kovan-release file"));
    }
    return version;
}

bool IProductInfo::getKovanVersion(std::uint16_t& major, std::uint16_t& minor) {
    major = minor = 0;
    const std::string version = getKovanVersionString();
    const std::size_t firstDot = version.find('.');
    if (firstDot == std::string::npos) {
        return false;
    }
    major = static_cast<std::uint16_t>(std::stoi(version.substr(0, firstDot)));
    const std::size_t secondDot = version.find('.', firstDot + 1);
    if (secondDot == std::string::npos) {
        return false;
    }
    minor = static_cast<std::uint16_t>(std::stoi(version.substr(firstDot + 1, secondDot - firstDot - 1)));
    return true;
}

} // namespace DAX::Platform
