#include <functional>
#include <string>
#include <utility>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <system_info.h>

#include "Platform/Product/IProductInfo.h"
#include "Platform/Product/SystemInfoAPIInternalProblemException.h"
#include "support/FakeKovan.h"
#include "support/NamedRow.h"
#include "support/Thrown.h"

namespace DAX::Tests {
namespace {

using Platform::IProductInfo;
using Platform::SystemInfoAPIInternalProblemException;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;

const std::string FEATURE = "com.velmora/featureconf/";

TEST(ProductBoard, IsTheEmulatorUnlessTheBuildSaysOtherwise) {
    EXPECT_EQ(IProductInfo::getBoardType(), "emulator");
}

TEST(ProductBoard, IsLoggedAtTheStart) {
    IProductInfo::initializeProduct();
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log INF Product was build for emulator"));
    EXPECT_THAT(FakeKovan::systemInfoReads(), IsEmpty());
}

TEST(ProductStorage, HasItsLimitsInBytes) {
    EXPECT_EQ(IProductInfo::getDAXBigTempStorageMaxSize(), 943718400);
    EXPECT_EQ(IProductInfo::getDAXSmallTempStorageMaxSize(), 104857600);
}

TEST(ProductModel, IsNeverARovetaOrAWOC) {
    EXPECT_FALSE(IProductInfo::isRovetaModel());
    EXPECT_FALSE(IProductInfo::isWOCModel());
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log INF Roveta model is set to 0", "log INF WOC model is set to 0"));
}

TEST(StretchedModel, HasAPanelOf540Lines) {
    for (const int height : {539, 540, 541}) {
        FakeKovan::setSystemInfo(FEATURE + "panel_resolution_height", height);
        EXPECT_EQ(IProductInfo::isStretchedModel(), height == 540) << height;
    }
    EXPECT_THAT(FakeKovan::journal(), IsEmpty());
}

TEST(StretchedModel, IsNoneWhenTheHeightCannotBeRead) {
    FakeKovan::setSystemInfo(FEATURE + "panel_resolution_height", 540);
    FakeKovan::failSystemInfo(FEATURE + "panel_resolution_height", -5);
    EXPECT_FALSE(IProductInfo::isStretchedModel());
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log ERR Read com.velmora/featureconf/panel_resolution_height from "
                                                  "FMS failed with error -5"));
}

TEST(PictorModel, IsWhatItsKeySays) {
    FakeKovan::setSystemInfo(FEATURE + "pictor_portrait_mode_support", true);
    EXPECT_TRUE(IProductInfo::isPictorModel());
    FakeKovan::setSystemInfo(FEATURE + "pictor_portrait_mode_support", false);
    EXPECT_FALSE(IProductInfo::isPictorModel());
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log INF Pictor Model: [true].", "log INF Pictor Model: [false]."));
}

TEST(PictorModel, IsNoneWhenItsKeyCannotBeRead) {
    EXPECT_FALSE(IProductInfo::isPictorModel());
    EXPECT_THAT(FakeKovan::systemInfoReads(), ElementsAre(FEATURE + "pictor_portrait_mode_support"));
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log ERR Getting pictor model error!"));
}

TEST(QuorinModel, IsWhatItsKeySays) {
    FakeKovan::setSystemInfo(FEATURE + "display_rotator_supported", true);
    EXPECT_TRUE(IProductInfo::isQuorinModel());
    FakeKovan::setSystemInfo(FEATURE + "display_rotator_supported", false);
    EXPECT_FALSE(IProductInfo::isQuorinModel());
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log INF Quorin Model: [true].", "log INF Quorin Model: [false]."));
}

TEST(QuorinModel, IsNoneWhenItsKeyCannotBeRead) {
    EXPECT_FALSE(IProductInfo::isQuorinModel());
    EXPECT_THAT(FakeKovan::systemInfoReads(), ElementsAre(FEATURE + "display_rotator_supported"));
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log ERR Getting quorin model error!"));
}

TEST(SBOX, IsExactlyThatText) {
    for (const std::string text : {"SBOX", "sbox", "SBOX2", ""}) {
        FakeKovan::reset();
        FakeKovan::setSystemInfo(FEATURE + "lfd_sbb_type", text);
        EXPECT_EQ(IProductInfo::isSBOX(), text == "SBOX") << text;
        EXPECT_THAT(FakeKovan::journal(), ElementsAre("log INF Is SBOX: [" + text + "]."));
    }
}

TEST(SBOX, IsNoneWhenItsKeyCannotBeRead) {
    FakeKovan::setSystemInfo(FEATURE + "lfd_sbb_type", "SBOX");
    FakeKovan::failSystemInfo(FEATURE + "lfd_sbb_type", -22);
    EXPECT_FALSE(IProductInfo::isSBOX());
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log ERR Getting sbox property error!"));
}

TEST(SBOX, IsNoneWhenItsTextIsMissing) {
    FakeKovan::setSystemInfo(FEATURE + "lfd_sbb_type", nullptr);
    EXPECT_FALSE(IProductInfo::isSBOX());
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log ERR Getting sbox property error!"));
}

TEST(RequiredText, IsAFailureWhenItIsMissing) {
    FakeKovan::setSystemInfo(8, nullptr);
    EXPECT_EQ(thrownDescription<Platform::SystemInfoAPIInternalProblemException>(
                  [] { IProductInfo::getMainSoftwareVersionDate(); }),
              "Unable to read SW version from system-info");
    FakeKovan::setSystemInfo(FEATURE + "product.chipset", nullptr);
    EXPECT_EQ(
        thrownDescription<Platform::SystemInfoAPIInternalProblemException>([] { IProductInfo::getChipsetType(); }),
        "Unable to read chipset type from system-info");
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log ERR Unable to read SW version from system-info",
                                                  "log ERR Unable to read chipset type from system-info"));
}

TEST(PowerBattery, IsSupportedAsItsKeySays) {
    FakeKovan::setSystemInfo(FEATURE + "power.battery_framework_support", true);
    EXPECT_TRUE(IProductInfo::IsPowerBatteryFrameworkSupported());
    FakeKovan::setSystemInfo(FEATURE + "power.battery_framework_support", false);
    EXPECT_FALSE(IProductInfo::IsPowerBatteryFrameworkSupported());
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log INF isPowerBatteryFrameworkSupported: 1",
                                                  "log INF isPowerBatteryFrameworkSupported: 0"));
}

TEST(PowerBattery, IsNotSupportedWhenItsKeyCannotBeRead) {
    FakeKovan::setSystemInfo(FEATURE + "power.battery_framework_support", true);
    FakeKovan::failSystemInfo(FEATURE + "power.battery_framework_support", -5);
    EXPECT_FALSE(IProductInfo::IsPowerBatteryFrameworkSupported());
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log ERR Getting com.velmora/featureconf/power.battery_framework_support failed with "
                            "status: -5",
                            "log INF isPowerBatteryFrameworkSupported: 0"));
}

TEST(EnterpriseModel, IsWhatItsKeySaysUnderTheNameOfAnother) {
    FakeKovan::setSystemInfo(FEATURE + "kovan_enterprise_platform.support", true);
    EXPECT_TRUE(IProductInfo::isEnterpriseModel());
    FakeKovan::setSystemInfo(FEATURE + "kovan_enterprise_platform.support", false);
    EXPECT_FALSE(IProductInfo::isEnterpriseModel());
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log INF Pictor Model: [true].", "log INF Pictor Model: [false]."));
}

TEST(IWB, IsSupportedAsItsKeySays) {
    FakeKovan::setSystemInfo(FEATURE + "iwb_support", true);
    EXPECT_TRUE(IProductInfo::isIWBSuppoted());
    FakeKovan::setSystemInfo(FEATURE + "iwb_support", false);
    EXPECT_FALSE(IProductInfo::isIWBSuppoted());
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log INF IWB Supported: [true].", "log INF IWB Supported: [false]."));
}

TEST(PartitionTxt, IsTheFileThatItsKeyTells) {
    FakeKovan::setSystemInfo(FEATURE + "product.partition_file", "/etc/partition.txt");
    EXPECT_EQ(IProductInfo::getPartitionTxtFilePath(), boost::filesystem::path("/etc/partition.txt"));
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log INF Partition.txt file path is: /etc/partition.txt"));
}

// A text of the platform. The key of a numbered one is its number.
struct TextFact : NamedRow {
    std::string (*operation)();
    std::string key;
};

class ProductText : public testing::TestWithParam<TextFact> {};

TEST_P(ProductText, IsTheTextAsItStands) {
    FakeKovan::setSystemInfo(GetParam().key, " a-Text ");
    EXPECT_EQ(GetParam().operation(), " a-Text ");
    EXPECT_THAT(FakeKovan::systemInfoReads(), ElementsAre(GetParam().key));
    EXPECT_THAT(FakeKovan::journal(), IsEmpty());
}

TEST_P(ProductText, IsAskedForAfresh) {
    for (const std::string text : {"one", "other"}) {
        FakeKovan::setSystemInfo(GetParam().key, text);
        EXPECT_EQ(GetParam().operation(), text);
    }
}

INSTANTIATE_TEST_SUITE_P(Of, ProductText,
                         testing::Values(TextFact{"SoftwareDate", IProductInfo::getMainSoftwareVersionDate, "8"},
                                         TextFact{"Submicom", IProductInfo::getSubmicomVersion, "133"},
                                         TextFact{"PlatformType", IProductInfo::getPlatformType, "564"},
                                         TextFact{"ChipsetType", IProductInfo::getChipsetType,
                                                  FEATURE + "product.chipset"},
                                         TextFact{"Localset", IProductInfo::getLocalset, "90"},
                                         TextFact{"ModelLine", IProductInfo::getModelLine, "0"}),
                         rowName);

TEST(ModelLine, IsAnotherTextInChina) {
    FakeKovan::setSystemInfo("0", "CHI_DTV");
    FakeKovan::setSystemInfo("620", "CHI_2");
    EXPECT_EQ(IProductInfo::getModelLine(), "CHI_2");
    EXPECT_THAT(FakeKovan::systemInfoReads(), ElementsAre("0", "620"));
}

TEST(ModelLine, IsTheChineseOneOnlyForExactlyThatText) {
    for (const std::string line : {"CHI_DTV2", "chi_dtv", "CHI_DT"}) {
        FakeKovan::setSystemInfo("0", line);
        EXPECT_EQ(IProductInfo::getModelLine(), line);
    }
}

TEST(ModelLine, MustTellItsTextInChina) {
    FakeKovan::setSystemInfo("0", "CHI_DTV");
    EXPECT_EQ(thrownDescription<SystemInfoAPIInternalProblemException>(IProductInfo::getModelLine),
              "Unable to read china model line from system-info");
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log ERR Unable to read china model line from system-info"));
}

// An operation that has no answer without the platform's.
struct RequiredFact : NamedRow {
    std::function<void()> operation;
    std::string key;
    std::string failure;
};

class RequiredProductFact : public testing::TestWithParam<RequiredFact> {};

TEST_P(RequiredProductFact, IsLoggedAndThrownWhenItCannotBeRead) {
    for (const int result : {-5, -22, 1}) {
        FakeKovan::reset();
        FakeKovan::failSystemInfo(GetParam().key, result);
        EXPECT_EQ(thrownDescription<SystemInfoAPIInternalProblemException>(GetParam().operation), GetParam().failure);
        EXPECT_THAT(FakeKovan::journal(), ElementsAre("log ERR " + GetParam().failure));
    }
}

const char SW_VERSION[] = "Unable to read SW version from system-info";

INSTANTIATE_TEST_SUITE_P(
    Of, RequiredProductFact,
    testing::Values(
        RequiredFact{"VersionString", IProductInfo::getVersionString, "128", SW_VERSION},
        RequiredFact{"VersionMajor", IProductInfo::getMainSoftwareVersionMajor, "128", SW_VERSION},
        RequiredFact{"VersionMinor", IProductInfo::getMainSoftwareVersionMinor, "128", SW_VERSION},
        RequiredFact{"Model", IProductInfo::getModelString, "128", SW_VERSION},
        RequiredFact{"SoftwareDate", IProductInfo::getMainSoftwareVersionDate, "8", SW_VERSION},
        RequiredFact{"Submicom", IProductInfo::getSubmicomVersion, "133", SW_VERSION},
        RequiredFact{"PartitionTxt", IProductInfo::getPartitionTxtFilePath, FEATURE + "product.partition_file",
                     "Unable to read partition file path from system-info"},
        RequiredFact{"PlatformType", IProductInfo::getPlatformType, "564",
                     "Unable to read platform type from system-info"},
        RequiredFact{"ChipsetType", IProductInfo::getChipsetType, FEATURE + "product.chipset",
                     "Unable to read chipset type from system-info"},
        RequiredFact{"Localset", IProductInfo::getLocalset, "90", "Unable to read localset from system-info"},
        RequiredFact{"ModelLine", IProductInfo::getModelLine, "0", "Unable to read model line from system-info"},
        RequiredFact{"Enterprise", IProductInfo::isEnterpriseModel, FEATURE + "kovan_enterprise_platform.support",
                     "Unable to read enterprise model key from system-info"},
        RequiredFact{"IWB", IProductInfo::isIWBSuppoted, FEATURE + "iwb_support",
                     "Unable to read IWB support key from system-info"},
        RequiredFact{"ProductType", IProductInfo::getProductType, FEATURE + "product.product_type",
                     "Unable to read product key from system-info"}),
    rowName);

// Each required fact with the operation that asks for it.
TEST(RequiredProductFact, FailsAtTheOperationThatAsksForIt) {
    const std::pair<std::string, std::function<void()>> OPERATIONS[] = {
        {"getVersionString()", IProductInfo::getVersionString},
        {"getMainSoftwareVersionMajor()", IProductInfo::getMainSoftwareVersionMajor},
        {"getMainSoftwareVersionMinor()", IProductInfo::getMainSoftwareVersionMinor},
        {"getModelString()", IProductInfo::getModelString},
        {"getMainSoftwareVersionDate()", IProductInfo::getMainSoftwareVersionDate},
        {"getPartitionTxtFilePath()", IProductInfo::getPartitionTxtFilePath},
        {"getSubmicomVersion()", IProductInfo::getSubmicomVersion},
        {"getPlatformType()", IProductInfo::getPlatformType},
        {"getChipsetType()", IProductInfo::getChipsetType},
        {"getLocalset()", IProductInfo::getLocalset},
        {"getModelLine()", IProductInfo::getModelLine},
        {"isEnterpriseModel()", IProductInfo::isEnterpriseModel},
        {"isIWBSuppoted()", IProductInfo::isIWBSuppoted},
    };
    int line = 0; // they are in the source in this order
    for (const auto& [name, operation] : OPERATIONS) {
        const ThrowSite site = siteThrownBy(operation);
        EXPECT_THAT(site.function, HasSubstr("IProductInfo::" + name));
        EXPECT_THAT(site.file, EndsWith("/src/Platform/Product/Implementation/CProductInfo.cpp"));
        EXPECT_GT(site.line, line) << name;
        line = site.line;
    }
    const ThrowSite site = siteThrownBy(IProductInfo::getProductType);
    EXPECT_THAT(site.function, HasSubstr("IProductInfo::getProductType()"));
    EXPECT_THAT(site.file, EndsWith("/src/Platform/Product/Implementation/CProductInfoProductType.cpp"));
}

TEST(SoftwareVersion, IsRefusedAtTheOperationThatAsksForIt) {
    FakeKovan::setSystemInfo(SYSTEM_INFO_KEY_SOFTWARE_VERSION, "without");
    EXPECT_THAT(siteThrownBy(IProductInfo::getModelString).function, HasSubstr("IProductInfo::getModelString()"));
}

} // namespace
} // namespace DAX::Tests
