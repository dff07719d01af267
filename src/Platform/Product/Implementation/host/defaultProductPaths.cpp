#include "Platform/Product/Implementation/defaultProductPaths.h"

#include <cstdlib>
#include <string>

#include "Platform/Product/Implementation/CProductPaths.h"

namespace DAX {
namespace Platform {
namespace {

// The root folder of the simulated device; empty for none.
std::string simulatedRoot() {
    const char* const root = std::getenv("KOVAN_ROOT");
    return root != nullptr ? root : "";
}

class CSimulatedProductPaths : public CProductPaths {
public:
    CSimulatedProductPaths() : CProductPaths(simulatedRoot()) {}
};

} // namespace

std::unique_ptr<IProductPathsImpl> defaultProductPaths() {
    return std::make_unique<CSimulatedProductPaths>();
}

} // namespace Platform
} // namespace DAX
