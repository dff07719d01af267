#pragma once

#include <memory>

#include "Platform/Product/IProductPathsImpl.h"

namespace DAX::Platform {

// The paths of the platform that is linked.
std::unique_ptr<IProductPathsImpl> defaultProductPaths();

} // namespace DAX::Platform
