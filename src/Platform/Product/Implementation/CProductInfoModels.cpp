#include <string>

#include "Common/Logging/LoggingStream.h"
#include "Platform/Product/IProductInfo.h"
#include "Platform/Product/Implementation/SystemFacts.h"

namespace DAX::Platform {
namespace {

using SystemFacts::read;
using SystemFacts::textOf;

const int STRETCHED_PANEL_HEIGHT = 540;

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

} // namespace

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

} // namespace DAX::Platform
