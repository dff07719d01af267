#include "USBDeviceFixture.h"

namespace DAX::Tests {
namespace {

using namespace Common::Utils;
using Platform::IUSBDeviceManager;
using Platform::USBAPIException;
using Platform::UsbDeviceInitializer;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

TEST(UsbDeviceInitializerTest, IsTheSingletonOfItsId) {
    EXPECT_EQ(UsbDeviceInitializer::getID(), SINGLETON_USB_DEVICE_INITIALIZER);
    EXPECT_THAT(UsbDeviceInitializer::getRequirements(), IsEmpty());
}

TEST(UsbDeviceInitializerTest, StartsTheLibraryAndEndsIt) {
    {
        const auto initializer = SingletonsRegister::defaultFactory<UsbDeviceInitializer>();
        EXPECT_NO_THROW(initializer->throwIfUninitialized());
        EXPECT_THAT(FakeKovan::journal(), ElementsAre("usb init"));
    }
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("usb init", "usb fini"));
}

TEST(UsbDeviceInitializerTest, TellsWhenItIsAskedThatTheLibraryDidNotStart) {
    for (const int result : {-3, 1}) {
        FakeKovan::reset();
        FakeKovan::setUsbInitResult(result);
        {
            const auto initializer = SingletonsRegister::defaultFactory<UsbDeviceInitializer>();
            EXPECT_THAT(thrownFailure<USBAPIException>([&] { initializer->throwIfUninitialized(); }),
                        Pair("usb_device_init() failed", result));
        }
        EXPECT_THAT(FakeKovan::journal(), ElementsAre("usb init", "usb fini"));
    }
}

TEST(UsbDeviceInitializerTest, KeepsTheResultOfTheStart) {
    FakeKovan::setUsbInitResult(-3);
    const auto initializer = SingletonsRegister::defaultFactory<UsbDeviceInitializer>();
    FakeKovan::setUsbInitResult(0);
    EXPECT_THROW(initializer->throwIfUninitialized(), USBAPIException);
}

using UnstartedUSBDeviceTest = USBDeviceFixture;

TEST_F(UnstartedUSBDeviceTest, AssertsThatTheLibraryIsNeeded) {
    const std::string message = "Singleton SINGLETON_USB_DEVICE_INITIALIZER does not exist.";
    EXPECT_ASSERTION_MSG(IUSBDeviceManager::getUSBMountPaths(), "0", message);
    EXPECT_ASSERTION_MSG(IUSBDeviceManager::getMountPathById("id"), "0", message);
    EXPECT_ASSERTION_MSG(IUSBDeviceManager::getMountPathId("/mnt"), "0", message);
}

TEST_F(UnstartedUSBDeviceTest, FailsEveryListingOfALibraryThatDidNotStart) {
    FakeKovan::setUsbInitResult(-3);
    const SingletonServiceGuard<UsbDeviceInitializer> guard;
    const auto describe = [](const auto& list) { return thrownDescription<USBAPIException>(list); };
    EXPECT_EQ(describe([] { IUSBDeviceManager::getUSBMountPaths(); }), "usb_device_init() failed");
    EXPECT_EQ(describe([] { IUSBDeviceManager::getMountPathById("id"); }), "usb_device_init() failed");
    EXPECT_EQ(describe([] { IUSBDeviceManager::getMountPathId("/mnt"); }), "usb_device_init() failed");
    EXPECT_THAT(FakeKovan::journal("usb"), ElementsAre("usb init"));
}

TEST_F(UnstartedUSBDeviceTest, AddsTheFakeDeviceBeforeItLooksAtTheLibrary) {
    parameters->setCustomBoolParam("IUSBDeviceManager::addFakeUsbPath", true);
    FakeKovan::setUsbInitResult(-3);
    const SingletonServiceGuard<UsbDeviceInitializer> guard;
    EXPECT_THROW(IUSBDeviceManager::getUSBMountPaths(), USBAPIException);
    EXPECT_EQ(FakeKovan::countContaining("INF", "Adding fake USB mount path: "), 1);
}

} // namespace
} // namespace DAX::Tests
