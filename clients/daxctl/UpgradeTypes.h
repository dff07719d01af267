#pragma once

#include <map>
#include <string>

#include "DAXCommon/UpgradeType.h"

namespace daxctl {

// The upgrade types by the names that people use for them.
const std::map<std::string, DAX::DAXCommon::UpgradeType>& upgradeTypesByName();

// The name of a type, or its number when it has none.
std::string upgradeTypeName(DAX::DAXCommon::UpgradeType type);

} // namespace daxctl
