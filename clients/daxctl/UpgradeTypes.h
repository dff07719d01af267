#pragma once

#include <string>

#include "DAXCommon/UpgradeType.h"

namespace daxctl {

// The name of a type, or its number when it has no name.
std::string upgradeTypeName(DAX::DAXCommon::UpgradeType type);

} // namespace daxctl
