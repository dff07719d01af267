#include "Platform/Product/Implementation/defaultProductPaths.h"

#include "Platform/Product/Implementation/CProductPaths.h"

namespace DAX::Platform {

std::unique_ptr<IProductPathsImpl> defaultProductPaths() {
    return std::make_unique<CProductPaths>();
}

} // namespace DAX::Platform
