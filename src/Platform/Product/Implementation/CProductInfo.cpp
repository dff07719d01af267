#include <cstdint>
#include <string>

#include <boost/filesystem/path.hpp>
#include <system_info.h>

#include "Common/Logging/LoggingStream.h"
#include "DAXCommon/DAXCommonUtils.h"
#include "Platform/Product/IProductInfo.h"
#include "Platform/Product/Implementation/SystemFacts.h"
#include "Utility/Utils/ErrInfoStream.h"
#include "Utility/Utils/GenericException.h"

namespace DAX::Platform {
namespace {

using boost::filesystem::path;
using Common::Utils::errinfo_description;
using Common::Utils::errinfo_string;
using Common::Utils::GenericException;
using SystemFacts::required;
using SystemFacts::textOf;

const int MEBIBYTE = 1024 * 1024;

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

} // namespace

std::string IProductInfo::getBoardType() {
    return DAX_BOARD_TYPE;
}

void IProductInfo::initializeProduct() {
    DAX_LOG(INF) << "Product was build for " << getBoardType();
}

int IProductInfo::getDAXBigTempStorageMaxSize() {
    return 900 * MEBIBYTE;
}

int IProductInfo::getDAXSmallTempStorageMaxSize() {
    return 100 * MEBIBYTE;
}

std::string IProductInfo::getVersionString() {
    const std::string text = fullVersionString(BOOST_CURRENT_LOCATION);
    const std::size_t dash = text.rfind('-');
    if (dash == std::string::npos) {
        DAX_LOG(ERR) << "getVersionString: Wrong string format - lack of dash: " << text;
        DAX_THROW(GenericException(), errinfo_description("getVersionString: Wrong string format - lack of dash")
                                          << errinfo_string(text));
    }
    std::string version = text.substr(dash + 1);
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
    std::string model = getParsedModelAndVersion(BOOST_CURRENT_LOCATION).model;
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
    auto line = required<std::string>(SYSTEM_INFO_KEY_MODEL_LINE, "Unable to read model line from system-info",
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

} // namespace DAX::Platform
