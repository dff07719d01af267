#include "Platform/SystemAPI/USBSystemAPI/UsbDeviceInitializer.h"
#include "SystemControlTest.h"
#include "Utility/Utils/SingletonServiceGuard.h"

namespace DAX {
namespace Tests {
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
    // Mounts as many devices under "usb0", "usb1" and so on.
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

class FactoryUpgradeWithoutInitializer : public SystemControlTest {};

TEST_F(FactoryUpgradeWithoutInitializer, IsAnAssertionFailure) {
    const char missing[] = "SINGLETON_USB_DEVICE_INITIALIZER does not exist.";
    EXPECT_DEATH(FakeKovan::echoLogToStderr(true); ISystemControl::isFactoryUpgradeEnabled(), missing);
    EXPECT_DEATH(FakeKovan::echoLogToStderr(true); ISystemControl::isSequentialUpgradeEnabled(), missing);
}

} // namespace
} // namespace Tests
} // namespace DAX
