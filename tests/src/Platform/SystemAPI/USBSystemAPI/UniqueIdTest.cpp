#include "USBDeviceFixture.h"

namespace DAX::Tests {
namespace {

using Platform::IUSBDeviceManager;

class UniqueIdTest : public StartedUSBDeviceFixture {
protected:
    static std::string idOf(const FakeKovan::UsbDevice& device) {
        FakeKovan::setUsbDevices({device});
        return IUSBDeviceManager::getMountPathId(*device.mountPath).value_or("<no device>");
    }

    static std::string idOfDevice(const std::string& devname) { return idOf(device("/usb/a", devname)); }

    FakeKovan::UsbDevice stick = device("/usb/a", "sda1");
};

TEST_F(UniqueIdTest, HasItsFieldsInOrder) {
    EXPECT_EQ(idOf(stick), "S1:Maker:Stick:1111:2222:1");
}

TEST_F(UniqueIdTest, HasAllDigitsOfThePartition) {
    EXPECT_EQ(idOfDevice("/dev/sdb1023"), "S1:Maker:Stick:1111:2222:1023");
    EXPECT_EQ(idOfDevice("0"), "S1:Maker:Stick:1111:2222:0");
}

TEST_F(UniqueIdTest, HasNoPartitionForANameWithoutADigit) {
    EXPECT_EQ(idOfDevice("sda"), "S1:Maker:Stick:1111:2222:");
    EXPECT_EQ(idOfDevice(""), "S1:Maker:Stick:1111:2222:");
}

TEST_F(UniqueIdTest, HasNoPartitionForADeviceWithoutAName) {
    stick.devname.reset();
    EXPECT_EQ(idOf(stick), "S1:Maker:Stick:1111:2222:");
}

TEST_F(UniqueIdTest, IsTheSameInAnotherPort) {
    EXPECT_EQ(idOf(device("/usb/a", "sda1")), idOf(device("/usb/b", "sdb1")));
}

TEST_F(UniqueIdTest, DiffersBetweenTwoPartitionsOfOneStick) {
    EXPECT_NE(idOf(device("/usb/a", "sda1")), idOf(device("/usb/b", "sda2")));
}

TEST_F(UniqueIdTest, KeepsEmptyTextsAndNegativeNumbers) {
    stick.serial = "";
    stick.product = "";
    stick.vendorId = -1;
    EXPECT_EQ(idOf(stick), ":Maker::-1:2222:1");
}

TEST_F(UniqueIdTest, IsEmptyWithoutASerial) {
    stick.serial.reset();
    EXPECT_EQ(idOf(stick), "");
}

TEST_F(UniqueIdTest, EndsAtAMissingManufacturer) {
    stick.manufacturer.reset();
    EXPECT_EQ(idOf(stick), "S1:");
}

TEST_F(UniqueIdTest, EndsAtAMissingProduct) {
    stick.product.reset();
    EXPECT_EQ(idOf(stick), "S1:Maker:");
}

TEST_F(UniqueIdTest, AssertsThatOnlyDigitsFollowADigit) {
    const std::string assertion =
        "devname.find_first_not_of(digits, pos) == std::string::npos, std::string generate_unique_id(usb_device_h)";
    EXPECT_ASSERTION_WITHOUT_MSG(idOfDevice("sda1p"), assertion);
    EXPECT_ASSERTION_WITHOUT_MSG(idOfDevice("mmcblk0p1"), assertion);
}

TEST_F(UniqueIdTest, AssertsEvenForAnIdThatEndedBefore) {
    stick.serial.reset();
    stick.devname = "sda1p";
    EXPECT_ASSERTION_WITHOUT_MSG(idOf(stick), "devname.find_first_not_of(digits, pos) == std::string::npos");
}

} // namespace
} // namespace DAX::Tests
