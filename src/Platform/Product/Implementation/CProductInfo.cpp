#include <fstream>
#include <map>
#include <vector>

#include <boost/filesystem/operations.hpp>
#include <system_info.h>

#include "Common/IO/FlagFile.h"
#include "Common/Logging/LoggingStream.h"
#include "DAXCommon/DAXCommonUtils.h"
#include "Platform/Product/IProductInfo.h"
#include "Platform/Product/SystemInfoAPIInternalProblemException.h"
#include "Platform/ProductPaths/IProductPaths.h"
#include "Utility/Utils/CText.h"
#include "Utility/Utils/ErrInfoStream.h"
#include "Utility/Utils/GenericException.h"

namespace DAX::Platform {
namespace {

using boost::filesystem::path;
using Common::Utils::errinfo_description;
using Common::Utils::errinfo_string;
using Common::Utils::GenericException;

const int STRETCHED_PANEL_HEIGHT = 540;
const int MEBIBYTE = 1024 * 1024;

const std::vector<std::string> NOT_GENUINE_FLAG_LINES = {
    "This flag file means that the last BDiff upgrade failed because source partitions' CRCs on device and in the "
    "BDiff didn't match.",
    "It could be caused by manual changes to the source partition on the device.", "Next upgrade should be full."};

// From the platform's numbers.
const std::map<int, IProductInfo::EProductType> productTypeConversionMap = {
    {0, IProductInfo::TV},          {1, IProductInfo::MONITOR},   {2, IProductInfo::AV},  {6, IProductInfo::AV_PLAYER},
    {7, IProductInfo::AV_RECEIVER}, {3, IProductInfo::PROJECTOR}, {4, IProductInfo::LFD}, {5, IProductInfo::SMD},
    {9, IProductInfo::SPK},         {8, IProductInfo::HTV}};

const char* textOf(bool value) {
    return value ? "true" : "false";
}

// A text of the platform's, which is freed with its copy made. One that is missing in spite of a success was not read.
int copied(int result, char* text, std::string& value) {
    const Common::Utils::CText owned(text);
    if (result == 0 && text == nullptr) {
        return SYSTEM_INFO_ERROR_IO_ERROR;
    }
    if (result == 0) {
        value = text;
    }
    return result;
}

int read(system_info_key_e key, std::string& value) {
    char* text = nullptr;
    const int result = system_info_get_value_string(key, &text);
    return copied(result, text, value);
}

int read(const char* key, std::string& value) {
    char* text = nullptr;
    const int result = system_info_get_custom_string(key, &text);
    return copied(result, text, value);
}

int read(const char* key, bool& value) {
    return system_info_get_custom_bool(key, &value);
}

int read(const char* key, int& value) {
    return system_info_get_custom_int(key, &value);
}

// The value, which must be there.
template <class Value, class Key>
Value required(Key key, const char* failure, const boost::source_location& site) {
    Value value{};
    if (read(key, value) != 0) {
        DAX_LOG(ERR) << failure;
        DAX_THROW_AT(site, SystemInfoAPIInternalProblemException(), errinfo_description(failure));
    }
    return value;
}

const char NO_SW_VERSION[] = "Unable to read SW version from system-info";

std::string fullVersionString(const boost::source_location& site) {
    return required<std::string>(SYSTEM_INFO_KEY_SOFTWARE_VERSION, NO_SW_VERSION, site);
}

struct ModelAndVersion {
    std::string model;
    std::uint16_t major = 0;
    std::uint16_t minor = 0;
};

ModelAndVersion getParsedModelAndVersion(const boost::source_location& site) {
    const std::string text = fullVersionString(site);
    ModelAndVersion parsed;
    if (!DAXCommon::DAXCommonUtils::parsedModelAndVersion(text, parsed.model, parsed.major, parsed.minor)) {
        DAX_THROW_AT(site, GenericException(),
                     errinfo_description("getParsedModelAndVersion: Wrong string format - lack of dash")
                         << errinfo_string(text));
    }
    return parsed;
}

// A model that has its own feature key; false when it cannot be read.
bool hasFeature(const char* key, const char* failure, const char* answer) {
    bool value = false;
    if (read(key, value) != 0) {
        DAX_LOG(ERR) << failure;
        return false;
    }
    DAX_LOG(INF) << answer << textOf(value) << "].";
    return value;
}

// The value of the first line with "VERSION" and a "=".
std::string versionIn(std::istream& file) {
    for (std::string line; std::getline(file, line);) {
        const std::size_t equals = line.find('=');
        if (line.find("VERSION") != std::string::npos && equals != std::string::npos) {
            const std::string value = line.substr(equals + 1);
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

std::string IProductInfo::getBoardType() {
    return DAX_BOARD_TYPE;
}

void IProductInfo::initializeProduct() {
    DAX_LOG(INF) << "Product was build for " << getBoardType();
}

bool IProductInfo::isRovetaModel() {
    DAX_LOG(INF) << "Roveta model is set to " << false;
    return false;
}

bool IProductInfo::isWOCModel() {
    DAX_LOG(INF) << "WOC model is set to " << false;
    return false;
}

bool IProductInfo::isStretchedModel() {
    static const char key[] = "com.velmora/featureconf/panel_resolution_height";
    int height = 0;
    const int result = read(key, height);
    if (result != 0) {
        DAX_LOG(ERR) << "Read " << key << " from FMS failed with error " << result;
        height = 0;
    }
    return height == STRETCHED_PANEL_HEIGHT;
}

bool IProductInfo::isPictorModel() {
    return hasFeature("com.velmora/featureconf/pictor_portrait_mode_support", "Getting pictor model error!",
                      "Pictor Model: [");
}

bool IProductInfo::isQuorinModel() {
    return hasFeature("com.velmora/featureconf/display_rotator_supported", "Getting quorin model error!",
                      "Quorin Model: [");
}

bool IProductInfo::isSBOX() {
    std::string type;
    if (read("com.velmora/featureconf/lfd_sbb_type", type) != 0) {
        DAX_LOG(ERR) << "Getting sbox property error!";
        return false;
    }
    DAX_LOG(INF) << "Is SBOX: [" << type << "].";
    return type == "SBOX";
}

bool IProductInfo::IsPowerBatteryFrameworkSupported() {
    static const char key[] = "com.velmora/featureconf/power.battery_framework_support";
    bool value = false;
    const int result = read(key, value);
    if (result != 0) {
        DAX_LOG(ERR) << "Getting " << key << " failed with status: " << result;
        value = false;
    }
    DAX_LOG(INF) << "isPowerBatteryFrameworkSupported: " << value;
    return value;
}

int IProductInfo::getDAXBigTempStorageMaxSize() {
    return 900 * MEBIBYTE;
}

int IProductInfo::getDAXSmallTempStorageMaxSize() {
    return 100 * MEBIBYTE;
}

bool IProductInfo::isInstallationLocked() {
    return exists(IProductPaths::getInstallationLockPath());
}

void IProductInfo::releaseInstallationLock() {
    const path lock = IProductPaths::getInstallationLockPath();
    if (!Common::IO::removeFlagFile(lock)) {
        DAX_LOG(WRN) << "InstallationLock was not locked (checked for file:  " << lock.string() << ")";
    }
}

bool IProductInfo::isSourcePartitionNotGenuine() {
    return exists(IProductPaths::getSourcePartitionNotGenuineFlagPath());
}

void IProductInfo::setSourcePartitionNotGenuineFlag() {
    DAX_LOG(INF) << "Setting DAX SourcePartitionNotGenuine flag.";
    if (!isSourcePartitionNotGenuine()) {
        Common::IO::writeFlagFile(IProductPaths::getSourcePartitionNotGenuineFlagPath(), NOT_GENUINE_FLAG_LINES);
    }
}

void IProductInfo::releaseSourcePartitionNotGenuineFlag() {
    DAX_LOG(INF) << "Releasing SourcePartitionNotGenuine flag.";
    Common::IO::removeFlagFile(IProductPaths::getSourcePartitionNotGenuineFlagPath());
}

std::string IProductInfo::getKovanVersionString() {
    const std::string version = versionOf(IProductPaths::getFlashDeviceRootPath() / "etc" / "kovan-release");
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

std::string IProductInfo::getVersionString() {
    const std::string text = fullVersionString(BOOST_CURRENT_LOCATION);
    const std::size_t dash = text.rfind('-');
    if (dash == std::string::npos) {
        DAX_LOG(ERR) << "getVersionString: Wrong string format - lack of dash: " << text;
        DAX_THROW(GenericException(), errinfo_description("getVersionString: Wrong string format - lack of dash")
                                          << errinfo_string(text));
    }
    const std::string version = text.substr(dash + 1);
    DAX_LOG(INF) << "Version string: " << version << ".";
    return version;
}

int IProductInfo::getMainSoftwareVersionMajor() {
    const int major = getParsedModelAndVersion(BOOST_CURRENT_LOCATION).major;
    DAX_LOG(INF) << "MAJOR SW VERSION: " << major;
    return major;
}

int IProductInfo::getMainSoftwareVersionMinor() {
    const int minor = getParsedModelAndVersion(BOOST_CURRENT_LOCATION).minor;
    DAX_LOG(INF) << "MINOR SW VERSION: " << minor;
    return minor;
}

std::string IProductInfo::getModelString() {
    const std::string model = getParsedModelAndVersion(BOOST_CURRENT_LOCATION).model;
    DAX_LOG(INF) << "Model string: " << model << ".";
    return model;
}

std::string IProductInfo::getMainSoftwareVersionDate() {
    return required<std::string>(SYSTEM_INFO_KEY_SOFTWARE_DATE, NO_SW_VERSION, BOOST_CURRENT_LOCATION);
}

path IProductInfo::getPartitionTxtFilePath() {
    const auto file =
        required<std::string>("com.velmora/featureconf/product.partition_file",
                              "Unable to read partition file path from system-info", BOOST_CURRENT_LOCATION);
    DAX_LOG(INF) << "Partition.txt file path is: " << file;
    return file;
}

std::string IProductInfo::getSubmicomVersion() {
    return required<std::string>(SYSTEM_INFO_KEY_SUBMICOM_VERSION, NO_SW_VERSION, BOOST_CURRENT_LOCATION);
}

std::string IProductInfo::getPlatformType() {
    return required<std::string>(SYSTEM_INFO_KEY_PLATFORM_TYPE, "Unable to read platform type from system-info",
                                 BOOST_CURRENT_LOCATION);
}

std::string IProductInfo::getChipsetType() {
    return required<std::string>("com.velmora/featureconf/product.chipset",
                                 "Unable to read chipset type from system-info", BOOST_CURRENT_LOCATION);
}

std::string IProductInfo::getLocalset() {
    return required<std::string>(SYSTEM_INFO_KEY_LOCALSET, "Unable to read localset from system-info",
                                 BOOST_CURRENT_LOCATION);
}

std::string IProductInfo::getModelLine() {
    const auto line = required<std::string>(SYSTEM_INFO_KEY_MODEL_LINE, "Unable to read model line from system-info",
                                            BOOST_CURRENT_LOCATION);
    if (line != "CHI_DTV") {
        return line;
    }
    return required<std::string>(SYSTEM_INFO_KEY_CHINA_MODEL_LINE, "Unable to read china model line from system-info",
                                 BOOST_CURRENT_LOCATION);
}

bool IProductInfo::isEnterpriseModel() {
    const bool value = required<bool>("com.velmora/featureconf/kovan_enterprise_platform.support",
                                      "Unable to read enterprise model key from system-info", BOOST_CURRENT_LOCATION);
    DAX_LOG(INF) << "Pictor Model: [" << textOf(value) << "].";
    return value;
}

bool IProductInfo::isIWBSuppoted() {
    const bool value = required<bool>("com.velmora/featureconf/iwb_support",
                                      "Unable to read IWB support key from system-info", BOOST_CURRENT_LOCATION);
    DAX_LOG(INF) << "IWB Supported: [" << textOf(value) << "].";
    return value;
}

IProductInfo::EProductType IProductInfo::getProductType() {
    const int number = required<int>("com.velmora/featureconf/product.product_type",
                                     "Unable to read product key from system-info", BOOST_CURRENT_LOCATION);
    const auto found = productTypeConversionMap.find(number);
    const EProductType type = found != productTypeConversionMap.end() ? found->second : UNKNOWN_PRODUCT_TYPE;
    if (type == UNKNOWN_PRODUCT_TYPE) {
        DAX_LOG(ERR) << "Value " << number << " can not be converted to EProductType";
    }
    DAX_LOG(INF) << "Product Type: " << type;
    return type;
}

bool IProductInfo::isTBMModel() {
    try {
        return getProductType() == LFD && !isIWBSuppoted();
    } catch (...) {
        DAX_LOG(ERR) << "Unable to determine if this model is TBM. By default do not use TBM mode";
        return false;
    }
}

std::string IProductInfo::productTypeToString(EProductType type) {
    static const std::map<EProductType, std::string> texts = {{TV, "TV"},          {MONITOR, "MONITOR"},
                                                              {AV, "AV"},          {AV_PLAYER, "AV"},
                                                              {AV_RECEIVER, "AV"}, {PROJECTOR, "PROJECTOR"},
                                                              {LFD, "LFD"},        {SMD, "SMD"},
                                                              {SPK, "SPK"},        {HTV, "HTV"}};
    const auto found = texts.find(type);
    if (found == texts.end()) {
        DAX_LOG(ERR) << "Can't convert this productType value to string: " << type;
        DAX_THROW(SystemInfoAPIInternalProblemException(),
                  errinfo_description("Unable to convert this productType value to string"));
    }
    return found->second;
}

} // namespace DAX::Platform
