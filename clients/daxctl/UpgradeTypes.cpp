#include "daxctl/UpgradeTypes.h"

namespace daxctl {

using namespace DAX::DAXCommon;

const std::map<std::string, UpgradeType>& upgradeTypesByName() {
    static const std::map<std::string, UpgradeType> types = {
        {"UNDEFINED", UNDEFINED}, {"OTA", OTA}, {"OTN", OTN}, {"USB", USB}, {"POSTPONE", POSTPONE}};
    return types;
}

std::string upgradeTypeName(UpgradeType type) {
    for (const auto& [name, value] : upgradeTypesByName()) {
        if (value == type) {
            return name;
        }
    }
    return std::to_string(static_cast<int>(type));
}

} // namespace daxctl
