#include "Platform/ProductPaths/Implementation/defaultProductPaths.h"

#include "Platform/ProductPaths/Implementation/CProductPaths.h"

namespace DAX::Platform {

std::unique_ptr<IProductPathsImpl> defaultProductPaths() {
    return std::make_unique<CProductPaths>();
}

} // namespace DAX::Platform
