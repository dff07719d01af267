#include <string>
#include <vector>

#include <boost/optional/optional_io.hpp>
#include <gtest/gtest.h>

#include "Platform/SystemAPI/USBSystemAPI/IUSBDeviceManager.h"
#include "Platform/SystemAPI/USBSystemAPI/UsbDeviceInitializer.h"
#include "Utility/Utils/SingletonServiceGuard.h"
#include "clients/kovanctl/KovanctlTest.h"
#include "support/DebugParameters.h"
#include "support/NamedRow.h"

using namespace DAX::Tests;
using DAX::Platform::IUSBDeviceManager;
using DAX::Platform::UsbDeviceInitializer;

namespace {

struct Stick : NamedRow {
    std::vector<std::string> options;
    std::string id;
};

// The system finds the sticks that are plugged in at a desk.
class UsbIdTest : public KovanctlTest, public testing::WithParamInterface<Stick> {
protected:
    static std::string plug(const std::string& path) {
        std::vector<std::string> arguments = {"usb", "plug", path};
        const std::vector<std::string>& options = GetParam().options;
        arguments.insert(arguments.end(), options.begin(), options.end());
        return kovanctl(arguments).output;
    }

    const DebugParameters m_parameters;
    const DAX::Common::Utils::SingletonServiceGuard<UsbDeviceInitializer> m_started;
};

} // namespace

TEST_P(UsbIdTest, IsPrintedAsTheSystemMakesIt) {
    EXPECT_EQ(plug("/mnt/usb/a"), GetParam().id + "\n");
    EXPECT_EQ(IUSBDeviceManager::getMountPathId("/mnt/usb/a"), GetParam().id);
}

TEST_P(UsbIdTest, FindsTheStickUntilItIsUnplugged) {
    plug("/mnt/usb/a");
    EXPECT_EQ(IUSBDeviceManager::getMountPathById(GetParam().id), boost::filesystem::path("/mnt/usb/a"));
    EXPECT_EQ(kovanctl({"usb", "unplug", GetParam().id}).end, DONE);
    EXPECT_EQ(IUSBDeviceManager::getMountPathById(GetParam().id), boost::none);
}

INSTANTIATE_TEST_SUITE_P(
    Sticks, UsbIdTest,
    testing::Values(
        Stick{{"AsItComes"}, {}, "SN-sda:Marlow:Stick:4660:22136:1"},
        Stick{{"OddTexts"},
              {"--serial", "S 1", "--manufacturer", "a:b", "--product", "\tä\n"},
              "S 1:a:b:\tä\n:4660:22136:1"},
        Stick{{"Hexadecimal"}, {"--vendor-id", "0x0781", "--product-id", "0xFFFF"}, "SN-sda:Marlow:Stick:1921:65535:1"},
        Stick{{"Zeros"}, {"--vendor-id", "0", "--product-id", "0"}, "SN-sda:Marlow:Stick:0:0:1"},
        Stick{{"NoPartition"}, {"--device-name", "sdc"}, "SN-sdc:Marlow:Stick:4660:22136:"},
        Stick{{"LongPartition"}, {"--device-name", "sdc012"}, "SN-sdc:Marlow:Stick:4660:22136:012"},
        Stick{{"PartitionAlone"}, {"--device-name", "7"}, "SN-:Marlow:Stick:4660:22136:7"},
        Stick{{"NoSerial"}, {"--serial", ""}, ""}, Stick{{"NoManufacturer"}, {"--manufacturer", ""}, "SN-sda:"},
        Stick{{"NoProduct"}, {"--product", ""}, "SN-sda:Marlow:"}),
    rowName);
