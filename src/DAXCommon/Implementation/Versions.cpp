#include <string>

#include <boost/lexical_cast.hpp>

#include "Common/Logging/LoggingStream.h"
#include "DAXCommon/DAXCommonUtils.h"
#include "Utility/Utils/RethrowExceptionStream.h"

namespace DAX::DAXCommon {

void DAXCommonUtils::parseVersion(const std::string& version, int& major, int& minor) {
    const std::size_t point = version.find('.');
    const std::string minorText = point == std::string::npos ? "0" : version.substr(point + 1);
    try {
        const int parsedMajor = boost::lexical_cast<int>(version.substr(0, point));
        minor = boost::lexical_cast<int>(minorText);
        major = parsedMajor;
    } catch (...) {
        Common::Utils::rethrowWithText([&version](std::ostream& text) { text << "Parsing the version " << version; });
    }
}

bool DAXCommonUtils::parsedModelAndVersion(const std::string& text, std::string& model, unsigned short& major,
                                           unsigned short& minor) {
    DAX_LOG(DBG) << "parsedModelAndVersion got version string '" << text << "'";
    const std::size_t dash = text.rfind('-');
    if (dash == std::string::npos) {
        DAX_LOG(ERR) << "parsedModelAndVersion: Wrong string format - lack of dash: " << text;
        return false;
    }
    const std::string version = text.substr(dash + 1);
    model = text.substr(0, dash);
    DAX_LOG(DBG) << "version string: " << version;
    int parsedMajor = 0;
    int parsedMinor = 0;
    parseVersion(version, parsedMajor, parsedMinor);
    major = static_cast<unsigned short>(parsedMajor);
    minor = static_cast<unsigned short>(parsedMinor);
    DAX_LOG(DBG) << "version:" << major << "." << minor;
    return true;
}

std::string DAXCommonUtils::versionStringForUI(const std::string& version) {
    int major = 0;
    int minor = 0;
    parseVersion(version, major, minor);
    return std::to_string(major);
}

} // namespace DAX::DAXCommon
