#include "Platform/ProductPaths/Implementation/defaultProductPaths.h"

#include <cstdlib>
#include <string>

#include "Platform/ProductPaths/Implementation/CProductPaths.h"

namespace DAX::Platform {
namespace {

// The root folder of the simulated device without a slash at its end; empty when there is none.
std::string simulatedRoot() {
    const char* const given = std::getenv("KOVAN_ROOT");
    const std::string root = given != nullptr ? given : "";
    return root.substr(0, root.find_last_not_of('/') + 1);
}

class CSimulatedProductPaths : public CProductPaths {
public:
    CSimulatedProductPaths() : CProductPaths(simulatedRoot()) {}
};

} // namespace

std::unique_ptr<IProductPathsImpl> defaultProductPaths() {
    return std::make_unique<CSimulatedProductPaths>();
}

} // namespace DAX::Platform
