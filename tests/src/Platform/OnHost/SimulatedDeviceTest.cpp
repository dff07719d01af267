#include <boost/optional/optional_io.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Platform/Product/IProductInfo.h"
#include "Platform/Product/SystemInfoAPIInternalProblemException.h"
#include "Platform/SystemAPI/FactorySystemAPI/IFactorySettings.h"
#include "Platform/SystemAPI/SystemInfoSystemAPI/ISystemInfo.h"
#include "Platform/SystemAPI/USBSystemAPI/IUSBDeviceManager.h"
#include "Platform/SystemAPI/USBSystemAPI/UsbDeviceInitializer.h"
#include "Utility/Utils/SingletonServiceGuard.h"
#include "host/UsbFile.h"
#include "support/DebugParameters.h"
#include "support/TemporaryRoot.h"
#include "support/Thrown.h"

namespace DAX::Tests {
namespace {

using boost::filesystem::path;
using Platform::IFactorySettings;
using Platform::IProductInfo;
using Platform::ISystemInfo;
using Platform::IUSBDeviceManager;
using testing::ElementsAre;
using testing::IsEmpty;

// A simulated device that nobody has changed.
class SimulatedDeviceTest : public testing::Test {
protected:
    void device(const std::string& text) const { root.write("etc/kovan/device.ini", text); }

    const TemporaryRoot root{TemporaryRoot::SAME_FOR_ALL};
    DebugParameters parameters;
};

TEST_F(SimulatedDeviceTest, IsATelevisionOfItsModel) {
    EXPECT_EQ(IProductInfo::getProductType(), IProductInfo::TV);
    EXPECT_EQ(IProductInfo::getModelString(), "T-MARLOW");
    EXPECT_EQ(IProductInfo::getVersionString(), "1666.1");
    EXPECT_EQ(IProductInfo::getMainSoftwareVersionMajor(), 1666);
    EXPECT_EQ(IProductInfo::getMainSoftwareVersionMinor(), 1);
    EXPECT_EQ(IProductInfo::getModelLine(), "EUR_DTV");
    EXPECT_FALSE(IProductInfo::isTBMModel());
}

TEST_F(SimulatedDeviceTest, TellsEveryFactOfAProduct) {
    for (const auto fact : {IProductInfo::getMainSoftwareVersionDate, IProductInfo::getSubmicomVersion,
                            IProductInfo::getPlatformType, IProductInfo::getChipsetType, IProductInfo::getLocalset}) {
        EXPECT_NE(fact(), "");
    }
    EXPECT_NE(IProductInfo::getPartitionTxtFilePath(), path());
    EXPECT_FALSE(IProductInfo::isEnterpriseModel());
    EXPECT_FALSE(IProductInfo::isIWBSuppoted());
}

TEST_F(SimulatedDeviceTest, IsWhatItsFileSays) {
    device("[system_info]\nmodel_line=CHI_DTV\nchina_model_line=CHI_2\nsoftware_version=A-B-3.4\n"
           "[features]\ncom.velmora/featureconf/product.product_type=4\n");
    EXPECT_EQ(IProductInfo::getModelLine(), "CHI_2");
    EXPECT_EQ(IProductInfo::getModelString(), "A-B");
    EXPECT_TRUE(IProductInfo::isTBMModel());
}

TEST_F(SimulatedDeviceTest, HasTheSwitchesOfItsFactoryMenu) {
    EXPECT_TRUE(IFactorySettings::isRetailTvOtnEnabled());
    EXPECT_TRUE(IFactorySettings::isOTAEnabled());
    EXPECT_EQ(IFactorySettings::getOTNZone(), boost::none);
    device("[system_info]\notn_onoff=0\notn_testserver=11\n[plantcfg]\nmodel=7\n");
    EXPECT_FALSE(IFactorySettings::isRetailTvOtnEnabled());
    EXPECT_EQ(IFactorySettings::getOTNZone(), 'K');
    EXPECT_EQ(IFactorySettings::getModelEnum(), 7);
    EXPECT_EQ(IFactorySettings::getLocalsetEnum(), 1);
}

TEST_F(SimulatedDeviceTest, KeepsTheSubmodelThatIsSelected) {
    EXPECT_EQ(ISystemInfo::getSelectedSubModelString(ISystemInfo::AS_STORED), "T-MARLOW");
    ISystemInfo::setSelectedSubModelString("SUB");
    EXPECT_TRUE(ISystemInfo::isAnySubmodelSelected());
    EXPECT_EQ(ISystemInfo::getSelectedSubModelString(ISystemInfo::AS_STORED), "SUB");
    ISystemInfo::setSelectedSubModelString("T-MARLOW");
    EXPECT_FALSE(ISystemInfo::isAnySubmodelSelected());
}

TEST_F(SimulatedDeviceTest, KeepsTheVersionBeforeAnUpgrade) {
    ISystemInfo::saveCurrentVersionString();
    device("[system_info]\nsoftware_version=T-MARLOW-1667.2\n");
    EXPECT_EQ(ISystemInfo::loadCurrentVersionString(), "1666.1");
    EXPECT_EQ(IProductInfo::getVersionString(), "1667.2");
}

TEST_F(SimulatedDeviceTest, TellsNoFactThatItDoesNotHave) {
    EXPECT_EQ(thrownDescription([] { ISystemInfo::getSystemInfoCustomInt("com.velmora/none"); }),
              "Error during getting system-info value: SYSTEM_INFO_ERROR_INVALID_PARAMETER");
}

TEST_F(SimulatedDeviceTest, FailsAsItsFileSays) {
    device("[system_info]\notn_onoff=0\n[results]\nsystem_info/localset=-5\nsystem_info/otn_onoff=-5\n"
           "features/com.velmora/any=7\nplantcfg/model=-1\n");
    EXPECT_EQ(thrownDescription<Platform::SystemInfoAPIInternalProblemException>([] { IProductInfo::getLocalset(); }),
              "Unable to read localset from system-info");
    EXPECT_TRUE(IFactorySettings::isRetailTvOtnEnabled()); // the system's own default
    EXPECT_EQ(thrownDescription([] { IFactorySettings::getModelEnum(); }),
              "Factory API returned an error from function plantcfg_get_model_enum.");
    EXPECT_EQ(
        thrownText<Common::Utils::errinfo_stream_text>([] { ISystemInfo::getSystemInfoCustomInt("com.velmora/any"); }),
        "Error during getting system-info value: unrecognized error value: 7");
}

TEST_F(SimulatedDeviceTest, HasTheSticksThatArePluggedIn) {
    const Common::Utils::SingletonServiceGuard<Platform::UsbDeviceInitializer> started;
    EXPECT_THAT(IUSBDeviceManager::getUSBMountPaths(), IsEmpty());
    root.write("run/kovan/usb.ini", "[sda1]\nmount_path=/mnt/usb/a\nserial=S1\nmanufacturer=Marlow\nproduct=Stick\n"
                                    "vendor_id=4660\nproduct_id=22136\n[sdb]\nmount_path=/mnt/usb/b\nserial=S2\n");
    EXPECT_THAT(IUSBDeviceManager::getUSBMountPaths(), ElementsAre(path("/mnt/usb/a"), path("/mnt/usb/b")));
    EXPECT_EQ(IUSBDeviceManager::getMountPathById("S1:Marlow:Stick:4660:22136:1"), path("/mnt/usb/a"));
}

TEST_F(SimulatedDeviceTest, GivesASticksIdAsTheDeskDoes) {
    const KovanHost::UsbStick stick = {"sdb12", "/mnt/usb/b", "S2", "Marlow", "Stick", 7, 8};
    root.write("run/kovan/usb.ini", "[sdb12]\nmount_path=/mnt/usb/b\nserial=S2\nmanufacturer=Marlow\nproduct=Stick\n"
                                    "vendor_id=7\nproduct_id=8\n");
    const Common::Utils::SingletonServiceGuard<Platform::UsbDeviceInitializer> started;
    EXPECT_EQ(IUSBDeviceManager::getMountPathId("/mnt/usb/b"), KovanHost::uniqueIdOf(stick));
}

} // namespace
} // namespace DAX::Tests
