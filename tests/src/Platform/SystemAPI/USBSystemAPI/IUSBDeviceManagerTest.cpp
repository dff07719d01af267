#include "USBDeviceFixture.h"

namespace DAX::Tests {
namespace {

using boost::filesystem::path;
using Platform::IUSBDeviceManager;
using Platform::USBAPIException;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

class IUSBDeviceManagerTest : public StartedUSBDeviceFixture {
protected:
    std::string fakeUSB() const { return (root / "usb/fake-usb").string(); }

    // The exception of the listing.
    static std::pair<std::string, int> failure() {
        return thrownFailure<USBAPIException>([] { IUSBDeviceManager::getUSBMountPaths(); });
    }
};

TEST_F(IUSBDeviceManagerTest, ListsNothingWithoutADevice) {
    EXPECT_THAT(IUSBDeviceManager::getUSBMountPaths(), IsEmpty());
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log DBG Processing getUSBMountPaths", "log DBG Processing get_usb_mount_paths",
                            "usb get_device_list", "log DBG usb_device_get_device_list result : 0",
                            "log INF Number of usb devices found: 0", "usb free_device_list"));
}

TEST_F(IUSBDeviceManagerTest, ListsTheDevicesInTheirOrder) {
    FakeKovan::setUsbDevices({device("/usb/b", "sdb1"), device("/usb/a", "sda12")});
    EXPECT_THAT(IUSBDeviceManager::getUSBMountPaths(), ElementsAre(path("/usb/b"), path("/usb/a")));
    EXPECT_THAT(
        FakeKovan::journal(),
        ElementsAre("log DBG Processing getUSBMountPaths", "log DBG Processing get_usb_mount_paths",
                    "usb get_device_list", "log DBG usb_device_get_device_list result : 0",
                    "log INF Number of usb devices found: 2",
                    "log INF ADDING PATH: '/usb/b' with unique id 'S1:Maker:Stick:1111:2222:1' to usbPaths list",
                    "log INF ADDING PATH: '/usb/a' with unique id 'S1:Maker:Stick:1111:2222:12' to usbPaths list",
                    "usb free_device sdb1", "usb free_device sda12", "usb free_device_list",
                    "log DBG USBPATH: '/usb/b'", "log DBG USBPATH: '/usb/a'"));
}

TEST_F(IUSBDeviceManagerTest, ListsAfreshEachTime) {
    FakeKovan::setUsbDevices({device("/usb/a", "sda1")});
    EXPECT_THAT(IUSBDeviceManager::getUSBMountPaths(), ElementsAre(path("/usb/a")));
    FakeKovan::setUsbDevices({});
    EXPECT_THAT(IUSBDeviceManager::getUSBMountPaths(), IsEmpty());
}

TEST_F(IUSBDeviceManagerTest, GoesByTheWalkAndNotByTheCount) {
    FakeKovan::setUsbDevices({device("/usb/a", "sda1"), device("/usb/b", "sdb1")});
    FakeKovan::setUsbCount(0);
    EXPECT_THAT(IUSBDeviceManager::getUSBMountPaths(), ElementsAre(path("/usb/a"), path("/usb/b")));
    EXPECT_EQ(FakeKovan::count("INF", "Number of usb devices found: 0"), 1);
}

TEST_F(IUSBDeviceManagerTest, ListsAFakeDeviceFirst) {
    parameters->setCustomBoolParam("IUSBDeviceManager::addFakeUsbPath", true);
    EXPECT_THAT(IUSBDeviceManager::getUSBMountPaths(), ElementsAre(path(fakeUSB())));
    EXPECT_THAT(FakeKovan::messages("INF"),
                ElementsAre("Adding fake USB mount path: " + fakeUSB(), "Number of usb devices found: 0"));

    FakeKovan::setUsbDevices({device("/usb/a", "sda1")});
    EXPECT_THAT(IUSBDeviceManager::getUSBMountPaths(), ElementsAre(path(fakeUSB()), path("/usb/a")));
}

TEST_F(IUSBDeviceManagerTest, ListsNoFakeDeviceWhenTheParameterIsOff) {
    parameters->setCustomBoolParam("IUSBDeviceManager::addFakeUsbPath", false);
    EXPECT_THAT(IUSBDeviceManager::getUSBMountPaths(), IsEmpty());
}

TEST_F(IUSBDeviceManagerTest, FindsADeviceByItsId) {
    FakeKovan::setUsbDevices({device("/usb/a", "sda1"), device("/usb/b", "sda2")});
    EXPECT_EQ(IUSBDeviceManager::getMountPathById("S1:Maker:Stick:1111:2222:2"), path("/usb/b"));
    EXPECT_THAT(FakeKovan::messages("DBG"), ElementsAre("Processing getMountPathById", "Processing get_usb_mount_paths",
                                                        "usb_device_get_device_list result : 0"));
}

TEST_F(IUSBDeviceManagerTest, FindsTheFirstOfTwoWithOneId) {
    FakeKovan::setUsbDevices({device("/usb/a", "sda1"), device("/usb/b", "sdb1")});
    EXPECT_EQ(IUSBDeviceManager::getMountPathById("S1:Maker:Stick:1111:2222:1"), path("/usb/a"));
}

TEST_F(IUSBDeviceManagerTest, FindsTheFakeDevice) {
    parameters->setCustomBoolParam("IUSBDeviceManager::addFakeUsbPath", true);
    EXPECT_EQ(IUSBDeviceManager::getMountPathById("fake-usb"), path(fakeUSB()));
    EXPECT_EQ(IUSBDeviceManager::getMountPathId(fakeUSB()), std::string("fake-usb"));
}

TEST_F(IUSBDeviceManagerTest, FindsNothingByAnUnknownId) {
    FakeKovan::setUsbDevices({device("/usb/a", "sda1")});
    EXPECT_EQ(IUSBDeviceManager::getMountPathById("S1"), boost::none);
    EXPECT_EQ(IUSBDeviceManager::getMountPathById("fake-usb"), boost::none);
}

TEST_F(IUSBDeviceManagerTest, TellsTheIdOfAMountPath) {
    FakeKovan::setUsbDevices({device("/usb/a", "sda1"), device("/usb/b", "sda2"), device("/usb/b", "sda3")});
    EXPECT_EQ(IUSBDeviceManager::getMountPathId("/usb/b"), std::string("S1:Maker:Stick:1111:2222:2"));
    EXPECT_THAT(FakeKovan::messages("DBG"),
                ElementsAre("Processing get_usb_mount_paths", "usb_device_get_device_list result : 0"));
}

TEST_F(IUSBDeviceManagerTest, TellsNoIdOfAnUnknownMountPath) {
    FakeKovan::setUsbDevices({device("/usb/a", "sda1")});
    EXPECT_EQ(IUSBDeviceManager::getMountPathId("/usb"), boost::none);
}

TEST_F(IUSBDeviceManagerTest, ThrowsWhenThereIsNoList) {
    for (const int result : {-7, 1}) {
        FakeKovan::forgetRecords();
        FakeKovan::setUsbListResult(result);
        EXPECT_THAT(failure(), Pair("usb_device_get_device_list() failed", result));
        EXPECT_EQ(FakeKovan::count("DBG", "usb_device_get_device_list result : " + std::to_string(result)), 1);
        EXPECT_THAT(FakeKovan::journal("usb"), ElementsAre("usb get_device_list"));
    }
}

const std::vector<std::string> TAKEN_AND_FREED = {"usb get_device_list", "usb free_device sda1", "usb free_device sdb1",
                                                  "usb free_device_list"};

TEST_F(IUSBDeviceManagerTest, ThrowsForANegativeCountAndFreesTheDevices) {
    FakeKovan::setUsbDevices({device("/usb/a", "sda1"), device("/usb/b", "sdb1")});
    FakeKovan::setUsbCount(-1);
    EXPECT_THAT(failure(), Pair("usb_device_list_get_count() returned negative number.", -1));
    EXPECT_EQ(FakeKovan::count("INF", "Number of usb devices found: -1"), 1);
    EXPECT_EQ(FakeKovan::journal("usb"), TAKEN_AND_FREED);
}

TEST_F(IUSBDeviceManagerTest, ThrowsWhenItCannotBeginTheWalk) {
    FakeKovan::setUsbDevices({device("/usb/a", "sda1")});
    FakeKovan::failUsbWalk(0, -9);
    EXPECT_THAT(failure(), Pair("usb_device_list_get_first() or usb_device_list_get_next() failed", -9));
    EXPECT_EQ(FakeKovan::countContaining("INF", "ADDING PATH"), 0);
    EXPECT_THAT(FakeKovan::journal("usb"), ElementsAre("usb get_device_list", "usb free_device_list"));
}

TEST_F(IUSBDeviceManagerTest, ThrowsWhenItCannotGoOnWithTheWalk) {
    FakeKovan::setUsbDevices({device("/usb/a", "sda1"), device("/usb/b", "sdb1")});
    FakeKovan::failUsbWalk(1, 4);
    EXPECT_THAT(failure(), Pair("usb_device_list_get_first() or usb_device_list_get_next() failed", 4));
    EXPECT_EQ(FakeKovan::countContaining("INF", "ADDING PATH"), 1);
    EXPECT_THAT(FakeKovan::journal("usb"),
                ElementsAre("usb get_device_list", "usb free_device sda1", "usb free_device_list"));
}

TEST_F(IUSBDeviceManagerTest, ThrowsForADeviceThatIsMountedNowhereAndFreesTheDevices) {
    FakeKovan::UsbDevice unmounted = device("", "sdb1");
    unmounted.mountPath.reset();
    FakeKovan::setUsbDevices({device("/usb/a", "sda1"), unmounted});
    EXPECT_THROW(IUSBDeviceManager::getUSBMountPaths(), std::logic_error);
    EXPECT_EQ(FakeKovan::journal("usb"), TAKEN_AND_FREED);
}

TEST_F(IUSBDeviceManagerTest, FreesTheDevicesBeforeItsCallerSeesTheFailure) {
    FakeKovan::setUsbCount(-1);
    try {
        IUSBDeviceManager::getUSBMountPaths();
        FAIL() << "nothing thrown";
    } catch (const USBAPIException&) {
        FakeKovan::note("caught");
    }
    EXPECT_EQ(FakeKovan::journal().back(), "caught");
}

} // namespace
} // namespace DAX::Tests
