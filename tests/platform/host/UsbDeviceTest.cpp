#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <usb_device.h>

#include "host/UsbFile.h"
#include "platform/host/DeviceTest.h"
#include "support/CrashPoint.h"
#include "support/ForkedProcess.h"

using DAX::Tests::errorsOf;
using DAX::Tests::ForkedProcess;
using KovanHost::uniqueIdOf;
using KovanHost::UsbStick;
using KovanHost::UsbSticks;
using testing::ElementsAre;

namespace {

const char* const FILE_NAME = "run/kovan/usb.ini";
const UsbStick STICK = {"sda1", "/mnt/usb/a b", "S1", "Marlow", "Stick", 4660, 22136};
const std::string TEXT = "[sda1]\nmount_path=/mnt/usb/a b\nserial=S1\nmanufacturer=Marlow\nproduct=Stick\n"
                         "vendor_id=4660\nproduct_id=22136\n";

std::string orNull(const char* text) {
    return text != nullptr ? text : "<null>";
}

std::string describe(usb_device_h device) {
    return orNull(usb_device_get_devname(device)) + " " + orNull(usb_device_get_mountpath(device)) + " " +
           orNull(usb_device_get_serial(device)) + " " + orNull(usb_device_get_manufacturer(device)) + " " +
           orNull(usb_device_get_product(device)) + " " + std::to_string(usb_device_get_vendor_id(device)) + " " +
           std::to_string(usb_device_get_product_id(device));
}

class UsbDeviceTest : public testing::Test {
protected:
    UsbDeviceTest() { EXPECT_EQ(usb_device_init(), 0); }
    ~UsbDeviceTest() override { EXPECT_EQ(usb_device_fini(), 0); }

    static std::vector<usb_device_h> walk(usb_device_list_h list) {
        std::vector<usb_device_h> devices;
        usb_device_h device = nullptr;
        EXPECT_EQ(usb_device_list_get_first(list, &device), 0);
        while (device != nullptr) {
            devices.push_back(device);
            EXPECT_EQ(usb_device_list_get_next(list, &device), 0);
        }
        return devices;
    }

    // Lists and frees everything, as a caller does.
    static std::vector<std::string> devices() {
        usb_device_list_h list = nullptr;
        EXPECT_EQ(usb_device_get_device_list(&list), 0);
        std::vector<std::string> texts;
        for (const usb_device_h device : walk(list)) {
            texts.push_back(describe(device));
        }
        EXPECT_EQ(static_cast<int>(texts.size()), usb_device_list_get_count(list));
        for (const usb_device_h device : walk(list)) {
            EXPECT_EQ(free_usb_device_h(device), 0);
        }
        EXPECT_EQ(usb_device_free_device_list(list), 0);
        return texts;
    }

    void write(const std::string& text) const { m_root.write(FILE_NAME, text); }
    std::string path() const { return (m_root / FILE_NAME).string(); }

    const DAX::Tests::TemporaryRoot m_root;
};

void plug(const UsbStick& stick) {
    KovanHost::changeUsbSticks([&](UsbSticks& sticks) { sticks.push_back(stick); });
}

} // namespace

TEST_F(UsbDeviceTest, WithoutAFileThereIsNone) {
    EXPECT_THAT(devices(), ElementsAre());
    EXPECT_TRUE(std::filesystem::is_empty(m_root.path()));
}

TEST_F(UsbDeviceTest, DevicesHaveTheirFieldsAndTheirOrder) {
    write("[sdb1]\nmount_path=/b\n" + TEXT);

    EXPECT_THAT(devices(),
                ElementsAre("sdb1 /b <null> <null> <null> 0 0", "sda1 /mnt/usb/a b S1 Marlow Stick 4660 22136"));
}

TEST_F(UsbDeviceTest, WhatADeviceDoesNotTellIsNull) {
    write("[sda1]\n");

    EXPECT_THAT(devices(), ElementsAre("sda1 <null> <null> <null> <null> 0 0"));
}

TEST_F(UsbDeviceTest, ChangeIsSeenByTheNextList) {
    plug(STICK);
    EXPECT_EQ(devices().size(), 1u);
    KovanHost::changeUsbSticks([](UsbSticks& sticks) { sticks.clear(); });
    EXPECT_EQ(devices().size(), 0u);
}

TEST_F(UsbDeviceTest, ListStaysAsItWas) {
    plug(STICK);
    usb_device_list_h list = nullptr;
    ASSERT_EQ(usb_device_get_device_list(&list), 0);
    const usb_device_h device = walk(list).front();
    std::filesystem::remove(path());

    EXPECT_EQ(usb_device_list_get_count(list), 1);
    EXPECT_STREQ(usb_device_get_mountpath(device), "/mnt/usb/a b");
    EXPECT_EQ(walk(list), std::vector<usb_device_h>{device});
    usb_device_free_device_list(list);
}

TEST_F(UsbDeviceTest, WalkBehindTheEndStaysThere) {
    usb_device_list_h list = nullptr;
    ASSERT_EQ(usb_device_get_device_list(&list), 0);
    for (int time = 0; time < 3; ++time) {
        usb_device_h device = reinterpret_cast<usb_device_h>(list);
        EXPECT_EQ(usb_device_list_get_next(list, &device), 0);
        EXPECT_EQ(device, nullptr);
    }
    usb_device_free_device_list(list);
}

TEST_F(UsbDeviceTest, HandlesMayBeFreedDuringAWalk) {
    plug(STICK);
    plug({"sdb1", "/b", {}, {}, {}, 0, 0});
    usb_device_list_h list = nullptr;
    ASSERT_EQ(usb_device_get_device_list(&list), 0);
    usb_device_h device = nullptr;
    int freed = 0;
    for (usb_device_list_get_first(list, &device); device != nullptr; usb_device_list_get_next(list, &device)) {
        freed += free_usb_device_h(device) == 0;
    }
    EXPECT_EQ(freed, 2);
    EXPECT_EQ(usb_device_free_device_list(list), 0);
}

TEST_F(UsbDeviceTest, NullListOrDeviceFails) {
    usb_device_h device = nullptr;
    EXPECT_EQ(usb_device_get_device_list(nullptr), -EINVAL);
    EXPECT_EQ(usb_device_free_device_list(nullptr), -EINVAL);
    EXPECT_EQ(usb_device_list_get_count(nullptr), -EINVAL);
    EXPECT_EQ(usb_device_list_get_first(nullptr, &device), -EINVAL);
    EXPECT_EQ(usb_device_list_get_next(nullptr, &device), -EINVAL);
    EXPECT_EQ(free_usb_device_h(nullptr), -EINVAL);
    EXPECT_EQ(describe(nullptr), "<null> <null> <null> <null> <null> -22 -22");
}

TEST_F(UsbDeviceTest, NullPointerForTheDeviceFails) {
    usb_device_list_h list = nullptr;
    ASSERT_EQ(usb_device_get_device_list(&list), 0);
    EXPECT_EQ(usb_device_list_get_first(list, nullptr), -EINVAL);
    EXPECT_EQ(usb_device_list_get_next(list, nullptr), -EINVAL);
    usb_device_free_device_list(list);
}

TEST_F(UsbDeviceTest, ListNeedsAnInitializationThatIsNotEnded) {
    usb_device_list_h list = nullptr;
    ASSERT_EQ(usb_device_init(), 0);
    EXPECT_EQ(usb_device_fini(), 0);
    EXPECT_EQ(usb_device_get_device_list(&list), 0); // the fixture's own initialization is still in force
    usb_device_free_device_list(list);
    EXPECT_EQ(usb_device_fini(), 0);
    EXPECT_EQ(usb_device_get_device_list(&list), -EPERM);
    EXPECT_EQ(usb_device_fini(), -EPERM);
    EXPECT_EQ(usb_device_init(), 0);
}

TEST_F(UsbDeviceTest, BadFileLeavesWhatWasKnownAndIsReportedOnce) {
    plug(STICK);
    EXPECT_EQ(devices().size(), 1u);
    write(TEXT + "\nserial\n");

    EXPECT_EQ(errorsOf([] {
                  EXPECT_EQ(devices().size(), 1u);
                  EXPECT_EQ(devices().size(), 1u);
              }),
              path() + ": line 9: Key file contains line “serial” which is not a key-value pair, group, or comment; "
                       "keeping what was known\n");
}

TEST_F(UsbDeviceTest, BadFileMeansNoneToAProcessThatKnowsNothing) {
    write("[sda1]\nmount_path=/a\nvendor_id=0x1234\n");

    EXPECT_EQ(errorsOf([] {
                  EXPECT_THAT(devices(), ElementsAre());
                  EXPECT_THAT(devices(), ElementsAre());
              }),
              path() + ": line 3: 'vendor_id' in [sda1] is no number of 32 bits: '0x1234'; keeping what was known\n");
}

TEST_F(UsbDeviceTest, NameThatWouldEndTheSystemIsABadFile) {
    write("[sda1]\nmount_path=/a\n\n[mmcblk0p1]\nmount_path=/b\n[mmcblk0p1]\n");

    EXPECT_EQ(errorsOf([] { EXPECT_THAT(devices(), ElementsAre()); }),
              path() + ": line 4: [mmcblk0p1] is no device name: digits alone may follow a digit; keeping what was "
                       "known\n");
}

TEST_F(UsbDeviceTest, DeviceNameHasDigitsAtItsEndOrNone) {
    for (const char* name : {"sda", "sda1", "sda12", "7", "/dev/sda1"}) {
        EXPECT_TRUE(KovanHost::isDeviceName(name)) << name;
    }
    for (const char* name : {"sd1a", "mmcblk0p1", "sda1 ", "1-"}) {
        EXPECT_FALSE(KovanHost::isDeviceName(name)) << name;
    }
}

TEST_F(UsbDeviceTest, FileThatIsBadAgainIsReportedAgain) {
    write("x");
    errorsOf([] { devices(); });
    write(TEXT);
    EXPECT_EQ(errorsOf([] { EXPECT_EQ(devices().size(), 1u); }), "");
    write("x");

    EXPECT_NE(errorsOf([] { EXPECT_EQ(devices().size(), 1u); }), "");
}

TEST_F(UsbDeviceTest, ChangeOfABadFileIsRefusedAndLeavesIt) {
    write("x");

    EXPECT_THROW(plug(STICK), std::runtime_error);
    EXPECT_EQ(m_root.read(FILE_NAME), "x");
}

TEST_F(UsbDeviceTest, SticksAreWrittenAndReadBack) {
    plug(STICK);
    EXPECT_EQ(m_root.read(FILE_NAME), TEXT);
    plug({"sdb", std::nullopt, "", "ä\n", std::nullopt, 65535, 0});

    EXPECT_THAT(devices(),
                ElementsAre("sda1 /mnt/usb/a b S1 Marlow Stick 4660 22136", "sdb <null>  ä\n <null> 65535 0"));
}

TEST_F(UsbDeviceTest, UniqueIdEndsWhereTheStickTellsNothing) {
    EXPECT_EQ(uniqueIdOf(STICK), "S1:Marlow:Stick:4660:22136:1");
    EXPECT_EQ(uniqueIdOf({"sda1", "/a", {}, "m", "p", 1, 2}), "");
    EXPECT_EQ(uniqueIdOf({"sda1", "/a", "s", {}, "p", 1, 2}), "s:");
    EXPECT_EQ(uniqueIdOf({"sda1", "/a", "s", "m", {}, 1, 2}), "s:m:");
    EXPECT_EQ(uniqueIdOf({"sda", "/a", "s", "m", "p", 1, 2}), "s:m:p:1:2:");
    EXPECT_EQ(uniqueIdOf({"sda12", "/a", "", "", "", 0, 0}), "::"
                                                             ":0:0:12");
}

TEST_F(UsbDeviceTest, WritersInSeveralProcessesLoseNothing) {
    constexpr int PLUGGERS = 2;
    constexpr int STICKS = 50;
    std::vector<std::unique_ptr<ForkedProcess>> writers;
    for (int writer = 0; writer < PLUGGERS; ++writer) {
        writers.push_back(std::make_unique<ForkedProcess>([writer] {
            for (int number = 0; number < STICKS; ++number) {
                plug({"sd" + std::to_string(writer * STICKS + number), "/a", {}, {}, {}, 0, 0});
            }
            return 0;
        }));
    }
    for (const auto& writer : writers) {
        EXPECT_EQ(writer->wait(), 0);
    }
    const std::vector<std::string> all = devices();
    EXPECT_EQ(std::set<std::string>(all.begin(), all.end()).size(), 100u);
}

TEST_F(UsbDeviceTest, ReadersSeeWholeFilesWhileOthersWrite) {
    plug(STICK);
    ForkedProcess writer([] {
        for (int number = 0; number < 200; ++number) {
            KovanHost::changeUsbSticks([&](UsbSticks& sticks) { sticks.front().productId = number; });
        }
        return 0;
    });
    for (int time = 0; time < 500; ++time) {
        ASSERT_EQ(KovanHost::loadUsbSticks().size(), 1u);
    }
    EXPECT_EQ(writer.wait(), 0);
}

TEST_F(UsbDeviceTest, KilledWriterLeavesTheFileAsItWasOrAsItShallBe) {
    plug(STICK);
    const std::string before = m_root.read(FILE_NAME);
    plug({"sdb1", "/b", {}, {}, {}, 0, 0});
    const std::string after = m_root.read(FILE_NAME);
    int point = 0;
    std::set<std::string> seen;
    for (bool killed = true; killed; ++point) {
        write(before);
        killed = DAX::Tests::killAtSystemCall([] { plug({"sdb1", "/b", {}, {}, {}, 0, 0}); }, point);
        seen.insert(m_root.read(FILE_NAME));
    }
    EXPECT_GT(point, 10);
    EXPECT_EQ(seen, (std::set<std::string>{before, after}));
    plug({"sdc1", "/c", {}, {}, {}, 0, 0}); // works, since no lock is left
    EXPECT_EQ(devices().size(), 3u);
}
