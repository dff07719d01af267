#pragma once

#include <string>

#include "dax/client.h"

namespace daxctl {

// The name of a type, or its number when it has no name.
std::string upgradeTypeName(dax::UpgradeType type);

} // namespace daxctl
