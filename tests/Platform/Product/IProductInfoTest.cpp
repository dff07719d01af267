#include "Platform/Product/IProductInfo.h"

#include <filesystem>

#include "support/ProcessDeath.h"
#include "support/TemporaryRoot.h"

namespace DAX {
namespace Tests {
namespace {

using Platform::IProductInfo;

const char LOCK_FILE[] = "mnt/systemrw/org.kovan.tv.dax/data/tv/InstallationLock.dat";

// In a process of its own: paths stay what they were at the first question.
TEST(InstallationLock, IsTheExistenceOfItsFile) {
    const TemporaryRoot root;
    EXPECT_IN_CHILD({
        EXPECT_FALSE(IProductInfo::isInstallationLocked());
        root.write(LOCK_FILE, "");
        EXPECT_TRUE(IProductInfo::isInstallationLocked());
        std::filesystem::remove(root / LOCK_FILE);
        EXPECT_FALSE(IProductInfo::isInstallationLocked());
    });
}

} // namespace
} // namespace Tests
} // namespace DAX
