// On the device the root is empty. What is joined to it begins at the root of the file system, whatever the working
// directory is.
#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "Platform/Product/IProductInfo.h"
#include "Platform/ProductPaths/IProductPaths.h"
#include "Platform/ProductPaths/Implementation/CProductPaths.h"
#include "Platform/SystemAPI/SystemControlSystemAPI/ISystemControl.h"
#include "support/ProcessDeath.h"
#include "support/TemporaryRoot.h"
#include "support/Thrown.h"

namespace DAX::Tests {
namespace {

using Platform::IProductInfo;
using Platform::ISystemControl;

// Each test runs in a process of its own, since the paths, and the working directory, keep their first value.
class EmptyRoot : public testing::Test {
protected:
    // Sets the device's own paths, and a working directory that looks like the root of a device.
    void becomeTheDevice() const {
        Platform::ProductPaths::Details::setImplementationSingleton(std::make_unique<Platform::CProductPaths>());
        ASSERT_EQ(chdir(root.path().c_str()), 0);
    }

    const TemporaryRoot root;
};

TEST_F(EmptyRoot, HasItsReleaseFileAtTheRootOfTheFileSystem) {
    if (std::filesystem::exists("/etc/kovan-release")) {
        GTEST_SKIP() << "this machine has a release file";
    }
    root.write("etc/kovan-release", "VERSION=8.0.1\n");
    EXPECT_IN_CHILD({
        becomeTheDevice();
        EXPECT_THROW(IProductInfo::getKovanVersionString(), Common::Utils::GenericException);
    });
}

TEST_F(EmptyRoot, HasItsStandaloneFileAtTheRootOfTheFileSystem) {
    root.write("run/.standalone", "");
    EXPECT_IN_CHILD({
        becomeTheDevice();
        EXPECT_EQ(ISystemControl::isInStandaloneMode(), std::filesystem::exists("/run/.standalone"));
    });
}

TEST_F(EmptyRoot, HasItsKeyPrefixAtTheRootOfTheFileSystem) {
    const std::string prefix = "usr/share/org.kovan.tv.dax/woc/WocKeyPrefix.txt";
    if (std::filesystem::exists("/" + prefix)) {
        GTEST_SKIP() << "this machine has a key prefix";
    }
    root.write(prefix, "prefix");
    EXPECT_IN_CHILD({
        becomeTheDevice();
        EXPECT_THROW(ISystemControl::getWocOTNModelPrefix(), Common::Utils::GenericException);
    });
}

} // namespace
} // namespace DAX::Tests
