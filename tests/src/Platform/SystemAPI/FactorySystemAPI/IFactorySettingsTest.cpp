#include "FactorySettingsFixture.h"

namespace DAX::Tests {
namespace {

using Platform::IFactorySettings;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

const char OVERRIDE_OTN[] = "IFactorySettings::overrideOTNEnabled";
const char OVERRIDE_FAIL_TEST[] = "IFactorySettings::overrideDAXFailTestActive";

class FactorySwitchTest : public FactorySettingsFixture {};

TEST_F(FactorySwitchTest, OfNetworkUpdatesAtHomeIsThatOfTheMenu) {
    for (const int value : {0, 1, 2, -1}) {
        FakeKovan::forgetRecords();
        FakeKovan::setSystemInfo(902, value);
        EXPECT_EQ(IFactorySettings::isRetailTvOtnEnabled(), value != 0);
        EXPECT_THAT(FakeKovan::journal(),
                    ElementsAre("log INF isRetailTvOtnEnabled(): " + std::to_string(value != 0 ? 1 : 0)));
    }
}

TEST_F(FactorySwitchTest, OfNetworkUpdatesAtHomeIsOnByDefault) {
    EXPECT_TRUE(IFactorySettings::isRetailTvOtnEnabled());
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre(toldByDefault("902", "ID_OTN_ONOFF", 1), "log INF isRetailTvOtnEnabled(): 1"));
}

TEST_F(FactorySwitchTest, OfNetworkUpdatesOfABusinessIsThatOfTheMenu) {
    for (const int value : {0, 1, 2}) {
        FakeKovan::forgetRecords();
        FakeKovan::setSystemInfo(10130, value);
        EXPECT_EQ(IFactorySettings::isB2BTvOtnEnabled(), value != 0);
        EXPECT_THAT(FakeKovan::journal(),
                    ElementsAre("log INF isB2BTvOtnEnabled(): " + std::to_string(value != 0 ? 1 : 0)));
    }
}

TEST_F(FactorySwitchTest, OfNetworkUpdatesOfABusinessIsOnByDefault) {
    EXPECT_TRUE(IFactorySettings::isB2BTvOtnEnabled());
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre(toldByDefault("10130", "ID_HOTEL_OTN_UPDATE", 1), "log INF isB2BTvOtnEnabled(): 1"));
}

TEST_F(FactorySwitchTest, OfNetworkUpdatesIsOverriddenWhateverTheMenuSays) {
    FakeKovan::setSystemInfo(902, 1);
    FakeKovan::setSystemInfo(10130, 1);
    parameters->setCustomBoolParam(OVERRIDE_OTN, false);
    EXPECT_FALSE(IFactorySettings::isRetailTvOtnEnabled());
    EXPECT_FALSE(IFactorySettings::isB2BTvOtnEnabled());
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log INF OTNEnabled overridden to: 0", "log INF isRetailTvOtnEnabled(): 0",
                            "log INF OTNEnabled overridden to: 0", "log INF isB2BTvOtnEnabled(): 0"));
    EXPECT_THAT(FakeKovan::systemInfoReads(), IsEmpty());
}

TEST_F(FactorySwitchTest, OfNetworkUpdatesIsOverriddenToOn) {
    FakeKovan::setSystemInfo(902, 0);
    parameters->setCustomBoolParam(OVERRIDE_OTN, true);
    EXPECT_TRUE(IFactorySettings::isRetailTvOtnEnabled());
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log INF OTNEnabled overridden to: 1", "log INF isRetailTvOtnEnabled(): 1"));
}

TEST_F(FactorySwitchTest, OfTheFailTestIsThatOfTheMenu) {
    for (const int value : {0, 1, 2}) {
        FakeKovan::forgetRecords();
        FakeKovan::setSystemInfo(923, value);
        EXPECT_EQ(IFactorySettings::isDAXFailTestActive(), value != 0);
        EXPECT_THAT(FakeKovan::journal(), ElementsAre("log INF IFactorySettings::isDAXFailTestActive(): " +
                                                      std::to_string(value != 0 ? 1 : 0)));
    }
}

TEST_F(FactorySwitchTest, OfTheFailTestIsOffByDefault) {
    EXPECT_FALSE(IFactorySettings::isDAXFailTestActive());
    EXPECT_THAT(FakeKovan::journal(), ElementsAre(toldByDefault("923", "ID_DAX_FAIL_TEST", 0),
                                                  "log INF IFactorySettings::isDAXFailTestActive(): 0"));
}

TEST_F(FactorySwitchTest, OfTheFailTestIsOverridden) {
    for (const bool active : {true, false}) {
        FakeKovan::forgetRecords();
        FakeKovan::setSystemInfo(923, active ? 0 : 1);
        parameters->setCustomBoolParam(OVERRIDE_FAIL_TEST, active);
        EXPECT_EQ(IFactorySettings::isDAXFailTestActive(), active);
        EXPECT_THAT(FakeKovan::journal(),
                    ElementsAre(std::string("log INF DAXFailTestActive overridden to: ") + (active ? "1" : "0")));
        EXPECT_THAT(FakeKovan::systemInfoReads(), IsEmpty());
    }
}

TEST_F(FactorySwitchTest, OfTheShortTimeoutIsThatOfTheMenu) {
    FakeKovan::setSystemInfo(922, 3);
    EXPECT_TRUE(IFactorySettings::useShortOTATransactionTimeout());
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log INF ID_DAX_DURATION option is set in Factory settings. Using short OTA timeout."));
}

TEST_F(FactorySwitchTest, OfTheShortTimeoutIsOffByDefault) {
    EXPECT_FALSE(IFactorySettings::useShortOTATransactionTimeout());
    EXPECT_THAT(
        FakeKovan::journal(),
        ElementsAre(toldByDefault("922", "ID_DAX_DURATION", 0),
                    "log INF ID_DAX_DURATION option is not set in Factory settings. Using normal OTA timeout."));
}

TEST_F(FactorySwitchTest, OfTheFastBootIsThatOfTheMenu) {
    FakeKovan::setSystemInfo(869, 1);
    EXPECT_TRUE(IFactorySettings::isFastBootInProductionMode());
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log INF IFactorySettings::isFastBootInProductionMode(): 1"));
}

TEST_F(FactorySwitchTest, OfTheFastBootIsOffByDefault) {
    EXPECT_FALSE(IFactorySettings::isFastBootInProductionMode());
    EXPECT_THAT(FakeKovan::journal(), ElementsAre(toldByDefault("869", "ID_FAST_USB_BOOTING_ONOFF", 0),
                                                  "log INF IFactorySettings::isFastBootInProductionMode(): 0"));
}

class OTASupportTest : public FactorySettingsFixture {};

TEST_F(OTASupportTest, IsTheValueOne) {
    FakeKovan::setSystemInfo(890, 1);
    EXPECT_TRUE(IFactorySettings::isOTAEnabled());
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log INF Factory settings supports OTA"));
}

TEST_F(OTASupportTest, IsNoOtherValue) {
    for (const int value : {0, 2, -1}) {
        FakeKovan::forgetRecords();
        FakeKovan::setSystemInfo(890, value);
        EXPECT_FALSE(IFactorySettings::isOTAEnabled());
        EXPECT_THAT(FakeKovan::journal(), ElementsAre("log INF Factory settings doesn't support OTA"));
    }
}

TEST_F(OTASupportTest, IsMissingWhenItCannotBeRead) {
    FakeKovan::setSystemInfo(890, 1);
    FakeKovan::failSystemInfo(890, -5);
    EXPECT_FALSE(IFactorySettings::isOTAEnabled());
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log INF Factory settings doesn't support OTA"));
}

class OTNZoneTest : public FactorySettingsFixture {
protected:
    static boost::optional<char> zone(int value) {
        FakeKovan::forgetRecords();
        FakeKovan::setSystemInfo(904, value);
        return IFactorySettings::getOTNZone();
    }
};

TEST_F(OTNZoneTest, IsALetterForEachValueButOne) {
    const std::string letters = "ABCDEFGHIJKLMNOPQRS?UVWXYZ";
    for (int value = 1; value <= 26; ++value) {
        if (value != 20) {
            EXPECT_EQ(zone(value), letters[static_cast<std::size_t>(value - 1)]);
            EXPECT_THAT(FakeKovan::messages("INF"), IsEmpty());
        }
    }
}

TEST_F(OTNZoneTest, IsNoneBelowOneWithoutALogLine) {
    for (const int value : {0, -1}) {
        EXPECT_EQ(zone(value), boost::none);
        EXPECT_THAT(FakeKovan::journal(), IsEmpty());
    }
}

TEST_F(OTNZoneTest, IsNoneAndInvalidForTheRefusedLetterAndBeyondTheLast) {
    for (const int value : {20, 27, 1000}) {
        EXPECT_EQ(zone(value), boost::none);
        EXPECT_THAT(FakeKovan::journal(), ElementsAre("log INF Invalid zone code: " + std::to_string(value)));
    }
}

TEST_F(OTNZoneTest, IsNoneByDefault) {
    EXPECT_EQ(IFactorySettings::getOTNZone(), boost::none);
    EXPECT_THAT(FakeKovan::journal(), ElementsAre(toldByDefault("904", "ID_OTN_TESTSERVER", 0)));
}

class OTNServerTypeTest : public FactorySettingsFixture {};

TEST_F(OTNServerTypeTest, IsTwoForTheValueZero) {
    FakeKovan::setSystemInfo(126, 0);
    EXPECT_EQ(IFactorySettings::getOTNServerType(), 2);
    EXPECT_THAT(FakeKovan::journal(), IsEmpty());
}

TEST_F(OTNServerTypeTest, IsZeroForTheValueOne) {
    FakeKovan::setSystemInfo(126, 1);
    EXPECT_EQ(IFactorySettings::getOTNServerType(), 0);
    EXPECT_THAT(FakeKovan::journal(), IsEmpty());
}

TEST_F(OTNServerTypeTest, IsZeroByDefault) {
    EXPECT_EQ(IFactorySettings::getOTNServerType(), 0);
    EXPECT_THAT(FakeKovan::journal(), ElementsAre(toldByDefault("126", "ID_OTN_INFO_LINK_SERVER_TYPE", 1)));
}

TEST_F(OTNServerTypeTest, IsZeroForAnInvalidValue) {
    for (const int value : {2, -1}) {
        FakeKovan::forgetRecords();
        FakeKovan::setSystemInfo(126, value);
        EXPECT_EQ(IFactorySettings::getOTNServerType(), 0);
        EXPECT_THAT(FakeKovan::messages("INF"),
                    ElementsAre("Invalid OTN server type: " + std::to_string(value) + ". Using test server."));
    }
}

TEST_F(OTNServerTypeTest, IsOneWithTheDebugFlagAlthoughTheValueIsRead) {
    parameters->setUseOTNTestServer(true);
    for (const int value : {0, 1, 2}) {
        FakeKovan::forgetRecords();
        FakeKovan::setSystemInfo(126, value);
        EXPECT_EQ(IFactorySettings::getOTNServerType(), 1);
        EXPECT_THAT(FakeKovan::systemInfoReads(), ElementsAre("126"));
        EXPECT_THAT(FakeKovan::journal(), IsEmpty());
    }
}

class FactoryResetTest : public FactorySettingsFixture {};

TEST_F(FactoryResetTest, PutsTheFactoryValuesBack) {
    IFactorySettings::factoryReset();
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log INF Calling plantcfg_reset from FactoryAPI.", "plantcfg reset 0",
                                                  "log INF plantcfg_reset called successfully."));
}

TEST_F(FactoryResetTest, ThrowsForEveryResultButOne) {
    for (const int result : {0, -4, 2}) {
        FakeKovan::forgetRecords();
        FakeKovan::setPlantcfgResetResult(result);
        EXPECT_THAT(thrownFailure(IFactorySettings::factoryReset),
                    Pair("Factory API returned an error from function plantcfg_reset.", result));
        EXPECT_THAT(FakeKovan::journal(),
                    ElementsAre("log INF Calling plantcfg_reset from FactoryAPI.", "plantcfg reset 0",
                                "log ERR Factory API returned an error from function plantcfg_reset: " +
                                    std::to_string(result)));
    }
}

TEST_F(FactoryResetTest, ThrowsAtTheOperation) {
    FakeKovan::setPlantcfgResetResult(0);
    EXPECT_THAT(siteThrownBy(IFactorySettings::factoryReset).function,
                testing::HasSubstr("CFactorySettingsAPIImpl::factoryReset()"));
}

TEST_F(FactoryResetTest, PreparesNoUpgradeOfTheSystem) {
    IFactorySettings::prepareOsUpgrade();
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log INF Factory os upgrade api is disabled."));
}

class PlantNumbersTest : public FactorySettingsFixture {};

TEST_F(PlantNumbersTest, AreThoseOfTheDevice) {
    FakeKovan::setModelEnum(17);
    FakeKovan::setLocalsetEnum(-3);
    EXPECT_EQ(IFactorySettings::getModelEnum(), 17);
    EXPECT_EQ(IFactorySettings::getLocalsetEnum(), -3);
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log INF plantcfg_get_model_enum called successfully: 17",
                                                  "log INF plantcfg_get_localset_enum called successfully: -3"));
}

TEST_F(PlantNumbersTest, AreNoneWhenTheModelCannotBeRead) {
    for (const int result : {0, -4, 2}) {
        FakeKovan::forgetRecords();
        FakeKovan::setModelEnum(17, result);
        EXPECT_THAT(thrownFailure(IFactorySettings::getModelEnum),
                    Pair("Factory API returned an error from function plantcfg_get_model_enum.", result));
        EXPECT_THAT(FakeKovan::journal(),
                    ElementsAre("log ERR Factory API returned an error from function plantcfg_get_model_enum: " +
                                std::to_string(result)));
    }
}

TEST_F(PlantNumbersTest, AreNoneWhenTheLocalSetCannotBeRead) {
    for (const int result : {0, -4, 2}) {
        FakeKovan::forgetRecords();
        FakeKovan::setLocalsetEnum(17, result);
        EXPECT_THAT(thrownFailure(IFactorySettings::getLocalsetEnum),
                    Pair("Factory API returned an error from function plantcfg_get_localset_enum.", result));
        EXPECT_THAT(FakeKovan::journal(),
                    ElementsAre("log ERR Factory API returned an error from function plantcfg_get_localset_enum: " +
                                std::to_string(result)));
    }
}

} // namespace
} // namespace DAX::Tests
