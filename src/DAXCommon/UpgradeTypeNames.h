#pragma once

#include <map>
#include <string>

#include "DAXCommon/UpgradeType.h"

namespace DAX::DAXCommon {

// The names of the upgrade types that have one, UNDEFINED among them. Any thread may call; the maps live as long as the
// process.
const std::map<UpgradeType, std::string>& upgradeTypeNames();
const std::map<std::string, UpgradeType>& upgradeTypesByName();

} // namespace DAX::DAXCommon
