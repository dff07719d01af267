#include "daxctl/UpgradeTypes.h"

#include "DAXCommon/UpgradeTypeNames.h"

namespace daxctl {

std::string upgradeTypeName(dax::UpgradeType type) {
    const auto& names = DAX::DAXCommon::upgradeTypeNames();
    const auto named = names.find(static_cast<DAX::DAXCommon::UpgradeType>(type));
    return named != names.end() ? named->second : std::to_string(static_cast<int>(type));
}

} // namespace daxctl
