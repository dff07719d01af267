#include "Platform/Product/IProductInfo.h"
#include "Platform/Product/IProductPaths.h"

#include <cstdlib>
#include <filesystem>

#include <gtest/gtest.h>

#include "support/TemporaryRoot.h"

namespace DAX {
namespace Tests {
namespace {

using Platform::IProductInfo;
using Platform::IProductPaths;

const char LOCK_FILE[] = "mnt/systemrw/org.kovan.tv.dax/data/tv/InstallationLock.dat";

TEST(ProductPaths, AreThoseOfTheDeviceWithoutARoot) {
    const TemporaryRoot restoresTheVariable;
    ::unsetenv("KOVAN_ROOT");
    EXPECT_EQ(IProductPaths::getDAXPartitionPath(), "/mnt/systemrw/org.kovan.tv.dax/data/tv");
    EXPECT_EQ(IProductPaths::getLastSearchingDateFilePath(),
              "/mnt/systemrw/org.kovan.tv.dax/data/tv/LastSearchingDate");
    EXPECT_EQ(IProductPaths::getInstallationLockPath(), "/mnt/systemrw/org.kovan.tv.dax/data/tv/InstallationLock.dat");
}

TEST(ProductPaths, AnEmptyRootCountsAsNone) {
    const TemporaryRoot restoresTheVariable;
    ::setenv("KOVAN_ROOT", "", 1);
    EXPECT_EQ(IProductPaths::getDAXPartitionPath(), "/mnt/systemrw/org.kovan.tv.dax/data/tv");
}

TEST(ProductPaths, StandUnderTheRootOfTheSimulatedDevice) {
    const TemporaryRoot root;
    EXPECT_EQ(IProductPaths::getDAXPartitionPath().string(),
              root.path().string() + "/mnt/systemrw/org.kovan.tv.dax/data/tv");
}

TEST(ProductPaths, FollowTheRootWhenItChanges) {
    {
        const TemporaryRoot earlier;
        IProductPaths::getInstallationLockPath();
    }
    const TemporaryRoot root;
    EXPECT_EQ(IProductPaths::getInstallationLockPath().string(), (root / LOCK_FILE).string());
}

TEST(InstallationLock, IsTheExistenceOfItsFile) {
    const TemporaryRoot root;
    EXPECT_FALSE(IProductInfo::isInstallationLocked());
    root.write(LOCK_FILE, "");
    EXPECT_TRUE(IProductInfo::isInstallationLocked());
    std::filesystem::remove(root / LOCK_FILE);
    EXPECT_FALSE(IProductInfo::isInstallationLocked());
}

} // namespace
} // namespace Tests
} // namespace DAX
