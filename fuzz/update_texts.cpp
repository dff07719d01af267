// Takes any bytes as the texts that the programs of the update stack exchange: a packed progress, a version, a model
// with its version. An accepted text has the required form, and is the same after it was written and read again. Other
// texts are refused in the one way that callers expect, by all functions alike.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>

#include <boost/lexical_cast/bad_lexical_cast.hpp>
#include <boost/optional.hpp>

#include "DAXCommon/DAXCommonUtils.h"

namespace {

using namespace DAX::DAXCommon::DAXCommonUtils;
using Version = std::pair<int, int>;

void require(bool condition, const char* what) {
    if (!condition) {
        std::fprintf(stderr, "%s\n", what);
        std::abort();
    }
}

void checkProgress(const std::string& text) {
    int progress = 0;
    boost::optional<float> detail;
    if (!unpackStandaloneProgressValue(text, progress, detail)) {
        return;
    }
    require(text.find_first_not_of("0123456789+-.eE|") == std::string::npos, "a progress of other characters");
    require(detail.has_value() == (text.find('|') != std::string::npos),
            "a detail without its bar, or a bar without it");

    const std::string packed = packStandaloneProgressValue(progress, detail);
    int progressAgain = 0;
    boost::optional<float> detailAgain;
    require(unpackStandaloneProgressValue(packed, progressAgain, detailAgain), "a packed progress is refused");
    require(progressAgain == progress, "another progress is read back");
    require(packStandaloneProgressValue(progressAgain, detailAgain) == packed, "another detail is read back");
}

boost::optional<Version> parsed(const std::string& text) {
    Version version;
    try {
        parseVersion(text, version.first, version.second);
    } catch (const boost::bad_lexical_cast&) {
        return boost::none;
    }
    return version;
}

boost::optional<std::string> shown(const std::string& text) {
    try {
        return versionStringForUI(text);
    } catch (const boost::bad_lexical_cast&) {
        return boost::none;
    }
}

void checkVersion(const std::string& text) {
    const boost::optional<Version> version = parsed(text);
    const boost::optional<std::string> major = shown(text);
    require(version.has_value() == major.has_value(), "a version is shown that is none, or not shown");
    if (version) {
        require(*major == std::to_string(version->first), "another version is shown");
        require(parsed(*major + "." + std::to_string(version->second)) == version, "another version is read back");
    }
}

void checkModelAndVersion(const std::string& text) {
    const std::size_t dash = text.rfind('-');
    std::string model;
    unsigned short major = 0;
    unsigned short minor = 0;
    try {
        const bool accepted = parsedModelAndVersion(text, model, major, minor);
        require(accepted == (dash != std::string::npos), "a text without dash is accepted, or one with it refused");
    } catch (const boost::bad_lexical_cast&) {
        require(dash != std::string::npos && !parsed(text.substr(dash + 1)), "a good version is refused");
        return;
    }
    if (dash != std::string::npos) {
        const boost::optional<Version> version = parsed(text.substr(dash + 1));
        require(model == text.substr(0, dash), "another model");
        require(version && major == (version->first & 0xFFFF) && minor == (version->second & 0xFFFF), "other numbers");
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    setenv("KOVAN_DLOG", "none", 1);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    checkProgress(text);
    checkVersion(text);
    checkModelAndVersion(text);
    return 0;
}
