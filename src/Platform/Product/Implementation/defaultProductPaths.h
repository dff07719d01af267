#pragma once

#include <memory>

#include "Platform/Product/IProductPathsImpl.h"

namespace DAX {
namespace Platform {

// The paths of the platform that is linked.
std::unique_ptr<IProductPathsImpl> defaultProductPaths();

} // namespace Platform
} // namespace DAX
