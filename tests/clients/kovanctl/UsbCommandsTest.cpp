#include <memory>
#include <set>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>
#include <usb_device.h>

#include "clients/kovanctl/KovanctlTest.h"

using namespace DAX::Tests;
using testing::HasSubstr;
using Json = nlohmann::json;

namespace {

const char* const FILE_NAME = "run/kovan/usb.ini";

class UsbCommandsTest : public KovanctlTest {
protected:
    static FinishedRun usb(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "usb");
        return kovanctl(arguments);
    }

    static std::string list() { return usb({"list"}).output; }

    std::string path() const { return (m_root / FILE_NAME).string(); }
};

struct Mistake {
    std::vector<std::string> arguments;
    const char* message;
};

class UsbMistakeTest : public UsbCommandsTest, public testing::WithParamInterface<Mistake> {};

const Json PLAUSIBLE = {{"id", "SN-sda:Marlow:Stick:4660:22136:1"},
                        {"deviceName", "sda1"},
                        {"mountPath", "/mnt/usb/a"},
                        {"serial", "SN-sda"},
                        {"manufacturer", "Marlow"},
                        {"product", "Stick"},
                        {"vendorId", 4660},
                        {"productId", 22136}};

} // namespace

TEST_F(UsbCommandsTest, PlugMakesAPlausibleStickAndPrintsItsId) {
    const FinishedRun run = usb({"plug", "/mnt/usb/a"});

    EXPECT_EQ(run.end, DONE);
    EXPECT_EQ(run.output, "SN-sda:Marlow:Stick:4660:22136:1\n");
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(Json::parse(usb({"list", "--json"}).output), Json::array({PLAUSIBLE}));
}

TEST_F(UsbCommandsTest, PlugTakesEveryField) {
    const FinishedRun run = usb({"plug", "/a b", "--serial", "S 1", "--manufacturer", "M", "--product", "P",
                                 "--vendor-id", "0x0781", "--product-id", "65535", "--device-name", "mmc0", "--json"});

    EXPECT_EQ(run.end, DONE);
    EXPECT_EQ(Json::parse(run.output), Json({{"id", "S 1:M:P:1921:65535:0"},
                                             {"deviceName", "mmc0"},
                                             {"mountPath", "/a b"},
                                             {"serial", "S 1"},
                                             {"manufacturer", "M"},
                                             {"product", "P"},
                                             {"vendorId", 1921},
                                             {"productId", 65535}}));
    EXPECT_EQ(m_root.read(FILE_NAME),
              "[mmc0]\nmount_path=/a b\nserial=S 1\nmanufacturer=M\nproduct=P\nvendor_id=1921\nproduct_id=65535\n");
}

TEST_F(UsbCommandsTest, PluggedStickIsSeenByThePlatformAndGoneAfterwards) {
    usb({"plug", "/mnt/usb/a"});
    ASSERT_EQ(usb_device_init(), 0);
    const auto count = [] {
        usb_device_list_h list = nullptr;
        EXPECT_EQ(usb_device_get_device_list(&list), 0);
        const int number = usb_device_list_get_count(list);
        usb_device_free_device_list(list);
        return number;
    };
    EXPECT_EQ(count(), 1);
    usb({"unplug", "SN-sda:Marlow:Stick:4660:22136:1"});
    EXPECT_EQ(count(), 0);
    usb_device_fini();
}

TEST_F(UsbCommandsTest, DevicesAreNamedInTheirTurn) {
    usb({"plug", "/a"});
    usb({"plug", "/b"});
    usb({"plug", "/c", "--device-name", "sdc2"});
    usb({"plug", "/d"});
    usb({"unplug", "SN-sda:Marlow:Stick:4660:22136:1"});
    usb({"plug", "/e"});

    EXPECT_EQ(list(), "sdb1 SN-sdb:Marlow:Stick:4660:22136:1 /b\n"
                      "sdc2 SN-sdc:Marlow:Stick:4660:22136:2 /c\n"
                      "sdd1 SN-sdd:Marlow:Stick:4660:22136:1 /d\n"
                      "sda1 SN-sda:Marlow:Stick:4660:22136:1 /e\n");
}

TEST_F(UsbCommandsTest, NamesGoOnAfterTheAlphabet) {
    std::string text;
    for (char letter = 'a'; letter <= 'z'; ++letter) {
        text += std::string("[sd") + letter + "1]\n";
    }
    m_root.write(FILE_NAME, text);

    EXPECT_EQ(usb({"plug", "/a"}).output, "SN-sdaa:Marlow:Stick:4660:22136:1\n");
    EXPECT_EQ(usb({"plug", "/b"}).output, "SN-sdab:Marlow:Stick:4660:22136:1\n");
}

TEST_F(UsbCommandsTest, MountPathIsMadeAbsolute) {
    const std::string here = std::filesystem::current_path().string();
    usb({"plug", "x/../stick/"});
    usb({"plug", "/"});

    EXPECT_EQ(list(),
              "sda1 SN-sda:Marlow:Stick:4660:22136:1 " + here + "/stick\nsdb1 SN-sdb:Marlow:Stick:4660:22136:1 /\n");
}

TEST_F(UsbCommandsTest, EmptyFieldIsOneThatTheStickDoesNotTell) {
    EXPECT_EQ(usb({"plug", "/a", "--serial", ""}).output, "\n");
    EXPECT_EQ(usb({"plug", "/b", "--manufacturer", ""}).output, "SN-sdb:\n");
    EXPECT_EQ(usb({"plug", "/c", "--product", ""}).output, "SN-sdc:Marlow:\n");
    const FinishedRun run = usb({"unplug", "", "--json"});

    EXPECT_EQ(run.end, DONE);
    EXPECT_EQ(Json::parse(run.output).at("serial"), Json());
    EXPECT_EQ(list(), "sdb1 SN-sdb: /b\nsdc1 SN-sdc:Marlow: /c\n");
}

TEST_F(UsbCommandsTest, SameDeviceNameOrMountPathIsRefused) {
    usb({"plug", "/a"});
    const std::string before = m_root.read(FILE_NAME);

    expectFailure(usb({"plug", "/b", "--device-name", "sda1"}), REFUSED,
                  "kovanctl: 'sda1': there is such a device already\n");
    expectFailure(usb({"plug", "/a"}), REFUSED, "kovanctl: '/a': sda1 is mounted there\n");
    EXPECT_EQ(before, m_root.read(FILE_NAME));
}

TEST_F(UsbCommandsTest, UnplugTakesTheFirstOfTwoWithOneId) {
    usb({"plug", "/a", "--serial", "S"});
    usb({"plug", "/b", "--serial", "S"});
    const FinishedRun run = usb({"unplug", "S:Marlow:Stick:4660:22136:1"});

    EXPECT_EQ(run.end, DONE);
    EXPECT_EQ(run.output + run.errors, "");
    EXPECT_EQ(list(), "sdb1 S:Marlow:Stick:4660:22136:1 /b\n");
}

TEST_F(UsbCommandsTest, UnplugWithJsonPrintsTheRemovedStick) {
    usb({"plug", "/mnt/usb/a"});

    EXPECT_EQ(Json::parse(usb({"unplug", "--json", PLAUSIBLE.at("id").get<std::string>()}).output), PLAUSIBLE);
}

TEST_F(UsbCommandsTest, UnplugOfAnUnknownIdIsRefused) {
    usb({"plug", "/a"});

    expectFailure(usb({"unplug", "sda1"}), REFUSED, "kovanctl: 'sda1': there is no such stick\n");
    EXPECT_EQ(Json::parse(usb({"unplug", "x", "--json"}).output),
              Json({{"error", "'x': there is no such stick"}, {"kind", "refused"}}));
    EXPECT_EQ(list(), "sda1 SN-sda:Marlow:Stick:4660:22136:1 /a\n");
}

TEST_F(UsbCommandsTest, ListOfNothingIsEmptyAndMakesNothing) {
    EXPECT_EQ(list(), "");
    EXPECT_EQ(Json::parse(usb({"list", "--json"}).output), Json::array());
    EXPECT_TRUE(std::filesystem::is_empty(m_root.path()));
}

TEST_F(UsbCommandsTest, BadFileIsRefusedByAllAndStays) {
    m_root.write(FILE_NAME, "[sda1]\nvendor_id=x\n");
    const std::string message =
        "kovanctl: " + path() + ": line 2: 'vendor_id' in [sda1] is no number of 32 bits: 'x'\n";

    expectFailure(usb({"list"}), REFUSED, message);
    expectFailure(usb({"plug", "/a"}), REFUSED, message);
    expectFailure(usb({"unplug", "x"}), REFUSED, message);
    EXPECT_EQ(m_root.read(FILE_NAME), "[sda1]\nvendor_id=x\n");
}

TEST_F(UsbCommandsTest, FileThatCannotBeWrittenIsRefused) {
    m_root.write("run", "a file where a folder has to be");

    expectFailure(usb({"plug", "/a"}), REFUSED, "kovanctl: " + (m_root / "run/kovan").string() + ": Not a directory\n");
}

TEST_F(UsbCommandsTest, TextThatTheFileCannotHoldIsRefused) {
    expectFailure(usb({"plug", "/a", "--serial", "\xff"}), REFUSED, "kovanctl: '\xef\xbf\xbd' is no UTF-8 text\n");
    EXPECT_EQ(list(), "");
}

TEST_F(UsbCommandsTest, ManyAtOnceLoseNothing) {
    std::vector<std::unique_ptr<Process>> runs;
    for (int number = 0; number < 10; ++number) {
        runs.push_back(
            std::make_unique<Process>(Command{{KOVANCTL, "usb", "plug", "/" + std::to_string(number)}, {}, {}, {}}));
    }
    std::set<std::string> ids;
    for (const auto& run : runs) {
        EXPECT_EQ(run->waitForEnd(), DONE);
        ids.insert(run->output());
    }
    EXPECT_EQ(ids.size(), 10u);
    EXPECT_EQ(Json::parse(usb({"list", "--json"}).output).size(), 10u);
}

TEST_P(UsbMistakeTest, IsWrongUsageAndChangesNothing) {
    const FinishedRun run = usb(GetParam().arguments);

    EXPECT_EQ(run.end, WRONG_USAGE);
    EXPECT_EQ(run.output, "");
    EXPECT_THAT(run.errors, testing::StartsWith(GetParam().message));
    EXPECT_FALSE(std::filesystem::exists(path()));
}

INSTANTIATE_TEST_SUITE_P(
    Mistakes, UsbMistakeTest,
    testing::Values(
        Mistake{{}, "A subcommand is required"}, Mistake{{"plug"}, "PATH is required"},
        Mistake{{"plug", ""}, "kovanctl: the mount path is empty"},
        Mistake{{"plug", "/a", "--vendor-id", "65536"}, "--vendor-id: Value 65536 not in range 0 to 65535"},
        Mistake{{"plug", "/a", "--product-id", "-1"}, "--product-id: Value -1 not in range 0 to 65535"},
        Mistake{{"plug", "/a", "--product-id", "x"}, "--product-id: Value x not in range 0 to 65535"},
        Mistake{{"plug", "/a", "--vendor-id", "0424"}, "--vendor-id: 0424 is neither decimal nor behind 0x"},
        Mistake{{"plug", "/a", "--product-id", "0781"}, "--product-id: 0781 is neither decimal nor behind 0x"},
        Mistake{{"plug", "/a", "--device-name", "sd a"},
                "--device-name: a device name has letters, and digits at its end"},
        Mistake{{"plug", "/a", "--device-name", ""}, "--device-name: a device name has letters, and digits at its end"},
        Mistake{{"plug", "/a", "--device-name", "mmcblk0p1"},
                "--device-name: a device name has letters, and digits at its end"},
        Mistake{{"plug", "/a", "/b"}, "The following argument was not expected: /b"},
        Mistake{{"unplug"}, "ID is required"}, Mistake{{"list", "x"}, "The following argument was not expected: x"}));

TEST_F(UsbCommandsTest, HelpIsThereAtEveryPlace) {
    for (const std::vector<std::string>& place : {std::vector<std::string>{}, {"plug"}, {"unplug"}, {"list"}}) {
        std::vector<std::string> arguments = place;
        arguments.push_back("--help");
        const FinishedRun run = usb(arguments);
        EXPECT_EQ(run.end, DONE);
        EXPECT_THAT(run.output, HasSubstr("Usage: kovanctl usb"));
        EXPECT_THAT(run.output, HasSubstr("--json"));
        EXPECT_EQ(run.errors, "");
    }
}
