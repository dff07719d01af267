#include "DAXCommon/UpgradeTypeNames.h"

#include <boost/assert.hpp>

#include "DAXCommon/DAXCommonUtils.h"

namespace DAX::DAXCommon {

namespace {

std::map<std::string, UpgradeType> reversed(const std::map<UpgradeType, std::string>& names) {
    std::map<std::string, UpgradeType> types;
    for (const auto& [type, name] : names) {
        types.emplace(name, type);
    }
    return types;
}

} // namespace

const std::map<UpgradeType, std::string>& upgradeTypeNames() {
    static const std::map<UpgradeType, std::string> names{
        {UNDEFINED, "UNDEFINED"}, {OTA, "OTA"}, {OTN, "OTN"}, {USB, "USB"}, {POSTPONE, "POSTPONE"}};
    return names;
}

const std::map<std::string, UpgradeType>& upgradeTypesByName() {
    static const std::map<std::string, UpgradeType> types = reversed(upgradeTypeNames());
    return types;
}

std::string DAXCommonUtils::upgradeTypeToString(UpgradeType type) {
    const auto named = upgradeTypeNames().find(type);
    if (type == UNDEFINED || named == upgradeTypeNames().end()) {
        BOOST_ASSERT(false);
    }
    return named->second;
}

} // namespace DAX::DAXCommon
