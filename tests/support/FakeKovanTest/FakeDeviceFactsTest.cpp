#include <cstdlib>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <plantcfg.h>
#include <system_info.h>
#include <usb_device.h>

#include "support/FakeKovan.h"

using FakeKovan::UsbDevice;
using testing::ElementsAre;

TEST(FakeSystemInfo, GivesWhatWasSetByNumberAndByText) {
    FakeKovan::setSystemInfo(128, "A-1.2");
    FakeKovan::setSystemInfo("a/height", 540);
    FakeKovan::setSystemInfo("a/flag", true);
    char* text = nullptr;
    int number = 0;
    bool flag = false;

    EXPECT_EQ(system_info_get_value_string(SYSTEM_INFO_KEY_SOFTWARE_VERSION, &text), 0);
    EXPECT_STREQ(text, "A-1.2");
    std::free(text);
    EXPECT_EQ(system_info_get_custom_int("a/height", &number), 0);
    EXPECT_EQ(number, 540);
    EXPECT_EQ(system_info_get_custom_bool("a/flag", &flag), 0);
    EXPECT_TRUE(flag);
    EXPECT_THAT(FakeKovan::systemInfoReads(), ElementsAre("128", "a/height", "a/flag"));
}

TEST(FakeSystemInfo, RefusesAbsentValuesAndOtherTypesAndWhatShallFail) {
    FakeKovan::setSystemInfo(8, "text");
    FakeKovan::setSystemInfo(90, "text");
    FakeKovan::failSystemInfo(90, SYSTEM_INFO_ERROR_IO_ERROR);
    int number = 7;
    char* text = nullptr;

    EXPECT_EQ(system_info_get_value_int(SYSTEM_INFO_KEY_MODEL_LINE, &number), SYSTEM_INFO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(system_info_get_value_int(SYSTEM_INFO_KEY_SOFTWARE_DATE, &number), SYSTEM_INFO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(system_info_get_value_string(SYSTEM_INFO_KEY_LOCALSET, &text), SYSTEM_INFO_ERROR_IO_ERROR);
    EXPECT_EQ(number, 7);
    EXPECT_EQ(text, nullptr);
}

TEST(FakeSystemInfo, ForgetsTheReadsAndNotTheValues) {
    FakeKovan::setSystemInfo("a/height", 540);
    int number = 0;
    system_info_get_custom_int("a/height", &number);
    FakeKovan::forgetRecords();
    EXPECT_THAT(FakeKovan::systemInfoReads(), ElementsAre());

    EXPECT_EQ(system_info_get_custom_int("a/height", &number), 0);
    EXPECT_THAT(FakeKovan::systemInfoReads(), ElementsAre("a/height"));
}

TEST(FakePlantcfg, GivesItsNumbersAndRecordsResets) {
    FakeKovan::setModelEnum(12);
    FakeKovan::setLocalsetEnum(3, 0);
    int model = -1;
    int localset = -1;

    EXPECT_EQ(plantcfg_get_model_enum(&model), 1);
    EXPECT_EQ(plantcfg_get_localset_enum(&localset), 0);
    EXPECT_EQ(plantcfg_reset(0), 1);
    EXPECT_EQ(model, 12);
    EXPECT_EQ(localset, -1);
    EXPECT_THAT(FakeKovan::journal("plantcfg"), ElementsAre("plantcfg reset 0"));
}

namespace {

std::vector<std::string> walk(usb_device_list_h list) {
    std::vector<std::string> names;
    usb_device_h device = nullptr;
    for (int result = usb_device_list_get_first(list, &device); result == 0 && device != nullptr;
         result = usb_device_list_get_next(list, &device)) {
        names.emplace_back(usb_device_get_devname(device));
    }
    return names;
}

UsbDevice named(const std::string& name) {
    UsbDevice device;
    device.devname = name;
    return device;
}

} // namespace

TEST(FakeUsb, WalksItsListTwice) {
    FakeKovan::setUsbDevices({named("sda1"), named("sdb")});
    usb_device_list_h list = nullptr;
    ASSERT_EQ(usb_device_get_device_list(&list), 0);

    EXPECT_EQ(usb_device_list_get_count(list), 2);
    EXPECT_THAT(walk(list), ElementsAre("sda1", "sdb"));
    EXPECT_THAT(walk(list), ElementsAre("sda1", "sdb"));
    EXPECT_EQ(usb_device_free_device_list(list), 0);
}

TEST(FakeUsb, EndsAWalkWhereItShallFail) {
    FakeKovan::setUsbDevices({named("sda1"), named("sdb")});
    FakeKovan::failUsbWalk(1, -5);
    usb_device_list_h list = nullptr;
    ASSERT_EQ(usb_device_get_device_list(&list), 0);

    EXPECT_THAT(walk(list), ElementsAre("sda1"));
    usb_device_free_device_list(list);
}

TEST(FakeUsbDeathTest, EndsTheProcessWhenAFreedDeviceIsUsed) {
    FakeKovan::setUsbDevices({named("sda1")});
    usb_device_list_h list = nullptr;
    usb_device_h device = nullptr;
    ASSERT_EQ(usb_device_get_device_list(&list), 0);
    ASSERT_EQ(usb_device_list_get_first(list, &device), 0);
    free_usb_device_h(device);

    EXPECT_DEATH(usb_device_get_serial(device), "a freed USB device is used");
    usb_device_free_device_list(list);
}
