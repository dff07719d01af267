#include "Platform/Product/IProductInfo.h"

#include <boost/filesystem/operations.hpp>

#include "Platform/Product/IProductPaths.h"

namespace DAX {
namespace Platform {

bool IProductInfo::isInstallationLocked() {
    return boost::filesystem::exists(IProductPaths::getInstallationLockPath());
}

} // namespace Platform
} // namespace DAX
