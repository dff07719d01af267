#include <sys/stat.h>
#include <sys/sysmacros.h>

#include "Platform/SystemAPI/USBSystemAPI/UsbDeviceInitializer.h"
#include "SystemControlTest.h"
#include "Utility/Utils/SingletonServiceGuard.h"

namespace DAX::Tests {
namespace {

using Platform::ISystemControl;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

class FactoryUpgradeTest : public SystemControlTest {
protected:
    // Mounts this many devices, under "usb0", "usb1" and so on.
    void plug(int devices) {
        std::vector<FakeKovan::UsbDevice> plugged;
        for (int number = 0; number < devices; ++number) {
            FakeKovan::UsbDevice device;
            device.mountPath = mountPath(number);
            device.devname = "/dev/sda" + std::to_string(number);
            plugged.push_back(device);
        }
        FakeKovan::setUsbDevices(plugged);
    }

    std::string mountPath(int number) const { return (root / ("usb" + std::to_string(number))).string(); }

    void writeFlag(int number, const std::string& text) const {
        root.write("usb" + std::to_string(number) + "/DAX_AUTO_FLAG", text);
    }

    const Common::Utils::SingletonServiceGuard<Platform::UsbDeviceInitializer> initializer;
};

TEST_F(FactoryUpgradeTest, IsOffWithoutADeviceOrAFile) {
    EXPECT_FALSE(ISystemControl::isFactoryUpgradeEnabled());
    plug(2);
    EXPECT_FALSE(ISystemControl::isFactoryUpgradeEnabled());
    EXPECT_EQ(ISystemControl::getSequentialUpgradeDeviceMntPath(), "");
    EXPECT_THAT(FakeKovan::messages("ERR"), IsEmpty());
}

TEST_F(FactoryUpgradeTest, IsOnForAOneAlone) {
    plug(1);
    for (const char* const text : {"1", "1\r\n", "\n1", "1\n\n"}) {
        writeFlag(0, text);
        EXPECT_TRUE(ISystemControl::isFactoryUpgradeEnabled()) << text;
    }
    for (const char* const text : {"", "11", "0", "1 ", "AUTO", "auto"}) {
        writeFlag(0, text);
        EXPECT_FALSE(ISystemControl::isFactoryUpgradeEnabled()) << text;
    }
}

TEST_F(FactoryUpgradeTest, SaysWhichFileItFound) {
    plug(1);
    writeFlag(0, "a\rb\nc\r\n");
    ISystemControl::isFactoryUpgradeEnabled();
    EXPECT_THAT(FakeKovan::messages("INF"),
                Contains("Found Factory Upgrade Flag File: '" + mountPath(0) + "/DAX_AUTO_FLAG' with content: 'abc'"));
}

TEST_F(FactoryUpgradeTest, ReadsALongFileWhole) {
    plug(1);
    writeFlag(0, std::string(5000, '\n') + "1");
    EXPECT_TRUE(ISystemControl::isFactoryUpgradeEnabled());
}

TEST_F(FactoryUpgradeTest, TakesTheFirstDeviceThatHasAFile) {
    plug(3);
    writeFlag(1, "0");
    writeFlag(2, "1");
    EXPECT_FALSE(ISystemControl::isFactoryUpgradeEnabled());
    EXPECT_EQ(FakeKovan::countContaining("INF", "Found Factory Upgrade Flag File: '" + mountPath(1)), 1);
    EXPECT_EQ(FakeKovan::countContaining("INF", "Found Factory Upgrade Flag File: '" + mountPath(2)), 0);
}

TEST_F(FactoryUpgradeTest, ReadsNoFileButTheFirst) {
    plug(2);
    writeFlag(0, "1");
    std::filesystem::create_directories(mountPath(1) + "/DAX_AUTO_FLAG"); // which cannot be read
    EXPECT_TRUE(ISystemControl::isFactoryUpgradeEnabled());
    EXPECT_THAT(FakeKovan::messages("ERR"), IsEmpty());
}

TEST_F(FactoryUpgradeTest, IsOffWhenTheFileCannotBeRead) {
    plug(1);
    std::filesystem::create_directories(mountPath(0) + "/DAX_AUTO_FLAG");
    EXPECT_FALSE(ISystemControl::isFactoryUpgradeEnabled());
    EXPECT_THAT(told("ERR"), AllOf(StartsWith("CSystemControlCommon::isFactoryUpgradeEnabled Exception occured: "),
                                   HasSubstr("FileStreamIOException")));
}

TEST_F(FactoryUpgradeTest, IsOffWhenTheDevicesCannotBeListed) {
    FakeKovan::setUsbListResult(-9);
    EXPECT_FALSE(ISystemControl::isFactoryUpgradeEnabled());
    EXPECT_THAT(FakeKovan::messages("ERR"),
                ElementsAre(StartsWith("CSystemControlCommon::isFactoryUpgradeEnabled Exception occured: ")));
    EXPECT_EQ(FakeKovan::countContaining("ERR", "usb_device_get_device_list() failed"), 1);
}

TEST_F(FactoryUpgradeTest, IsSequentialForTheWordAlone) {
    plug(1);
    for (const char* const text : {"AUTO", "AUTO\r\n", "AU\nTO"}) {
        writeFlag(0, text);
        EXPECT_TRUE(ISystemControl::isSequentialUpgradeEnabled()) << text;
        EXPECT_EQ(ISystemControl::getSequentialUpgradeDeviceMntPath(), mountPath(0)) << text;
    }
    for (const char* const text : {"", "auto", "1", "11", "AUTO1", "AUTO "}) {
        writeFlag(0, text);
        EXPECT_FALSE(ISystemControl::isSequentialUpgradeEnabled()) << text;
        EXPECT_EQ(ISystemControl::getSequentialUpgradeDeviceMntPath(), "") << text;
    }
}

TEST_F(FactoryUpgradeTest, SaysWhetherItIsSequential) {
    plug(1);
    ISystemControl::isSequentialUpgradeEnabled();
    EXPECT_EQ(FakeKovan::messages("INF").back(), "There is no flag file for Sequential upgrade.");
    writeFlag(0, "AUTO");
    ISystemControl::isSequentialUpgradeEnabled();
    EXPECT_EQ(FakeKovan::messages("INF").back(), "There is flag file for Sequential upgrade: " + mountPath(0));
}

TEST_F(FactoryUpgradeTest, IsNotSequentialWhenTheFileCannotBeRead) {
    plug(1);
    std::filesystem::create_directories(mountPath(0) + "/DAX_AUTO_FLAG");
    EXPECT_EQ(ISystemControl::getSequentialUpgradeDeviceMntPath(), "");
    EXPECT_THAT(told("ERR"), AllOf(StartsWith("CSystemControl::getSequentialUpgradeDeviceMntPath Exception occured: "),
                                   HasSubstr("FileStreamIOException")));
    EXPECT_FALSE(ISystemControl::isSequentialUpgradeEnabled());
    EXPECT_EQ(FakeKovan::journal().back(), "log INF There is no flag file for Sequential upgrade.");
}

// What somebody may put on a stick to block the device, to fill its memory or to make it show its own files.
class HostileFactoryUpgrade : public FactoryUpgradeTest {
protected:
    HostileFactoryUpgrade() {
        plug(1);
        std::filesystem::create_directories(mountPath(0));
    }

    std::string flag() const { return mountPath(0) + "/DAX_AUTO_FLAG"; }

    // Checks that all operations take it for a file that cannot be read, for this reason, and show nothing of it.
    void expectRefusal(const std::string& reason) {
        EXPECT_FALSE(ISystemControl::isFactoryUpgradeEnabled());
        EXPECT_EQ(ISystemControl::getSequentialUpgradeDeviceMntPath(), "");
        EXPECT_FALSE(ISystemControl::isSequentialUpgradeEnabled());
        EXPECT_EQ(
            FakeKovan::countContaining("ERR", "CSystemControlCommon::isFactoryUpgradeEnabled Exception occured: "), 1);
        EXPECT_EQ(
            FakeKovan::countContaining("ERR", "CSystemControl::getSequentialUpgradeDeviceMntPath Exception occured: "),
            2);
        EXPECT_EQ(FakeKovan::countContaining("ERR", reason), 3);
        EXPECT_EQ(FakeKovan::countContaining("INF", "Found Factory Upgrade Flag File"), 0);
    }
};

TEST_F(HostileFactoryUpgrade, IsAPipe) {
    ASSERT_EQ(mkfifo(flag().c_str(), 0666), 0);
    expectRefusal("Not a regular file.");
}

TEST_F(HostileFactoryUpgrade, IsALinkToAPipe) {
    ASSERT_EQ(mkfifo((root / "pipe").c_str(), 0666), 0);
    std::filesystem::create_symlink(root / "pipe", flag());
    expectRefusal("Not a regular file.");
}

TEST_F(HostileFactoryUpgrade, IsALinkToAFileOfTheDevice) {
    root.write("secret", "1");
    std::filesystem::create_symlink(root / "secret", flag());
    expectRefusal("Not a regular file.");
}

TEST_F(HostileFactoryUpgrade, IsALinkToADevice) {
    std::filesystem::create_symlink("/dev/zero", flag());
    expectRefusal("Not a regular file.");
}

TEST_F(HostileFactoryUpgrade, IsALinkToItself) {
    std::filesystem::create_symlink(flag(), flag());
    expectRefusal("Too many levels of symbolic links");
}

TEST_F(HostileFactoryUpgrade, IsADevice) {
    if (mknod(flag().c_str(), S_IFCHR | 0666, makedev(1, 5)) != 0) {
        GTEST_SKIP() << "only the superuser may make a device";
    }
    expectRefusal("Not a regular file.");
}

TEST_F(HostileFactoryUpgrade, IsTooLarge) {
    writeFlag(0, std::string(64 * 1024, '\n') + "1");
    expectRefusal("File is larger than 65536 bytes.");
    std::filesystem::resize_file(flag(), std::uintmax_t(1) << 40U);
    EXPECT_FALSE(ISystemControl::isFactoryUpgradeEnabled());
}

TEST_F(HostileFactoryUpgrade, MayBeAsLargeAsTheLimit) {
    writeFlag(0, std::string(64 * 1024 - 1, '\n') + "1");
    EXPECT_TRUE(ISystemControl::isFactoryUpgradeEnabled());
}

class FactoryUpgradeWithoutInitializer : public SystemControlTest {};

TEST_F(FactoryUpgradeWithoutInitializer, IsAnAssertionFailure) {
    const char missing[] = "SINGLETON_USB_DEVICE_INITIALIZER does not exist.";
    EXPECT_DEATH(FakeKovan::echoLogToStderr(true); ISystemControl::isFactoryUpgradeEnabled(), missing);
    EXPECT_DEATH(FakeKovan::echoLogToStderr(true); ISystemControl::isSequentialUpgradeEnabled(), missing);
}

} // namespace
} // namespace DAX::Tests
