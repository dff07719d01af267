#pragma once

#include <boost/optional.hpp>

namespace DAX::Platform::UpgradeStatusDirectories {

// How the last upgrade ended, as one of two directories in the working directory of the process. ISystemControl
// documents the operations.

void set(bool success);
boost::optional<bool> get();
void remove();

} // namespace DAX::Platform::UpgradeStatusDirectories
