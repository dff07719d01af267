#pragma once

#include <memory>

#include "Platform/ProductPaths/IProductPathsImpl.h"

namespace DAX::Platform {

// The paths of the platform that is linked.
std::unique_ptr<IProductPathsImpl> defaultProductPaths();

} // namespace DAX::Platform
