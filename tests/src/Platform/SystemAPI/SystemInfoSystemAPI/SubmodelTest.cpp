#include <algorithm>
#include <stdexcept>

#include "Platform/Product/SystemInfoAPIInternalProblemException.h"
#include "SystemInfoFixture.h"

namespace DAX::Tests {
namespace {

using Platform::ISystemInfo;
using Platform::SystemInfoAPIInternalProblemException;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

const std::string FLASHED = UPDATE_SETTINGS + "flashedSubmodel";
const std::string SELECTED = UPDATE_SETTINGS + "selectedSubmodel";
const std::string ANY = UPDATE_SETTINGS + "isAnySubmodel";

// A device of the model "T-MARLOW", in no zone.
class SubmodelTest : public testing::Test {
protected:
    SubmodelTest() { FakeKovan::setSystemInfo(128, "T-MARLOW-1703.1"); }

    static void setZone(char letter) { FakeKovan::setSystemInfo(904, letter - 'A' + 1); }
    static std::string selectedIn(ISystemInfo::ZoneType zone) { return ISystemInfo::getSelectedSubModelString(zone); }

    // Checks that the failed write of "SUB", the last one in the journal, is logged with this text, followed by a
    // diagnostic of several lines.
    static void expectLoggedWithDiagnostic(const std::string& key, const std::string& text) {
        std::vector<std::string> told = FakeKovan::journal();
        const auto write = std::find(told.begin(), told.end(), "write " + key + "=SUB -> -9");
        ASSERT_GT(told.end() - write, 3);
        EXPECT_EQ(write[1], failedWrite(key));
        EXPECT_THAT(write[2], StartsWith("log ERR " + text));
        told.erase(told.begin(), write + 3);
        EXPECT_THAT(told, Each(StartsWith("log ERR ")));
        EXPECT_THAT(told, Contains(HasSubstr("Platform::VConfException")));
    }
};

TEST_F(SubmodelTest, OnTheDeviceIsThatOfTheStore) {
    FakeKovan::setSetting(FLASHED, "SUB");
    EXPECT_EQ(ISystemInfo::getFlashedSubModelString(), "SUB");
    EXPECT_THAT(FakeKovan::systemInfoReads(), IsEmpty());
}

TEST_F(SubmodelTest, OnTheDeviceIsTheModelWhenNoneIsStored) {
    EXPECT_EQ(ISystemInfo::getFlashedSubModelString(), "T-MARLOW");
    FakeKovan::setSetting(FLASHED, "");
    EXPECT_EQ(ISystemInfo::getFlashedSubModelString(), "T-MARLOW");
}

TEST_F(SubmodelTest, OnTheDeviceIsUnknownWithoutAModel) {
    FakeKovan::failSystemInfo(128, -5);
    EXPECT_EQ(thrownDescription<SystemInfoAPIInternalProblemException>(ISystemInfo::getFlashedSubModelString),
              "Unable to read SW version from system-info");
}

TEST_F(SubmodelTest, OnTheDeviceIsSaved) {
    ISystemInfo::setFlashedSubModelString("SUB");
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("write " + FLASHED + "=SUB"));
}

TEST_F(SubmodelTest, OnTheDeviceIsLoggedWhenItCannotBeSaved) {
    FakeKovan::failWrites(FLASHED, -9);
    EXPECT_NO_THROW(ISystemInfo::setFlashedSubModelString("SUB"));
    expectLoggedWithDiagnostic(FLASHED, "Error while saving flashed submodel string");
}

TEST_F(SubmodelTest, OfTheUserIsThatOfTheStore) {
    FakeKovan::setSetting(SELECTED, "SUB");
    EXPECT_EQ(selectedIn(ISystemInfo::WITH_OTN_ZONE), "SUB");
    EXPECT_EQ(selectedIn(ISystemInfo::AS_STORED), "SUB");
    EXPECT_EQ(ISystemInfo::getSelectedSubModelOrEmptyString(), "SUB");
    EXPECT_TRUE(ISystemInfo::isAnySubmodelSelected());
}

TEST_F(SubmodelTest, OfTheUserIsTheModelWhenNoneIsStored) {
    EXPECT_EQ(selectedIn(ISystemInfo::WITH_OTN_ZONE), "T-MARLOW");
    EXPECT_EQ(selectedIn(ISystemInfo::AS_STORED), "T-MARLOW");
}

TEST_F(SubmodelTest, OfTheUserIsEmptyWhenNoneIsStored) {
    EXPECT_EQ(ISystemInfo::getSelectedSubModelOrEmptyString(), "");
    EXPECT_FALSE(ISystemInfo::isAnySubmodelSelected());
    FakeKovan::setSetting(SELECTED, "");
    EXPECT_EQ(ISystemInfo::getSelectedSubModelOrEmptyString(), "");
    EXPECT_FALSE(ISystemInfo::isAnySubmodelSelected());
    EXPECT_THAT(FakeKovan::journal(), ElementsAre(failedReadOr(SELECTED), failedReadOr(SELECTED)));
}

TEST_F(SubmodelTest, OfTheUserHasTheLetterOfTheZone) {
    setZone('K');
    FakeKovan::setSetting(SELECTED, "SUB");
    EXPECT_EQ(selectedIn(static_cast<ISystemInfo::ZoneType>(0)), "KUB");
}

TEST_F(SubmodelTest, OfTheUserHasItsOwnLetterForEveryOtherZoneType) {
    setZone('K');
    FakeKovan::setSetting(SELECTED, "SUB");
    for (const int zone : {1, 2, -1}) {
        EXPECT_EQ(selectedIn(static_cast<ISystemInfo::ZoneType>(zone)), "SUB");
    }
}

TEST_F(SubmodelTest, OfTheUserIsTheModelWithTheLetterOfTheZoneWhenNoneIsStored) {
    setZone('K');
    EXPECT_EQ(selectedIn(ISystemInfo::WITH_OTN_ZONE), "K-MARLOW");
    EXPECT_EQ(selectedIn(ISystemInfo::AS_STORED), "T-MARLOW");
}

TEST_F(SubmodelTest, OfTheUserAsksForTheZoneAfterTheModel) {
    for (const ISystemInfo::ZoneType zone : {ISystemInfo::WITH_OTN_ZONE, ISystemInfo::AS_STORED}) {
        FakeKovan::forgetRecords();
        selectedIn(zone);
        EXPECT_THAT(FakeKovan::systemInfoReads(), ElementsAre("128", "904"));
    }
}

TEST_F(SubmodelTest, OfTheUserIsEmptyInAZoneWithoutAModel) {
    setZone('K');
    FakeKovan::setSystemInfo(128, "-1703.1");
    EXPECT_STREQ(selectedIn(ISystemInfo::WITH_OTN_ZONE).c_str(), "");
}

TEST_F(SubmodelTest, OfTheUserIsSavedWithTheZoneAskedForBeforeTheModel) {
    ISystemInfo::setSelectedSubModelString("SUB");
    EXPECT_THAT(FakeKovan::systemInfoReads(), ElementsAre("904", "128"));
}

TEST_F(SubmodelTest, OfTheUserIsNotSavedWhenTheModelCannotBeRead) {
    FakeKovan::failSystemInfo(128, -5);
    EXPECT_EQ(
        thrownDescription<SystemInfoAPIInternalProblemException>([] { ISystemInfo::setSelectedSubModelString("SUB"); }),
        "Unable to read SW version from system-info");
    EXPECT_THAT(FakeKovan::writes(), IsEmpty());
}

TEST_F(SubmodelTest, OfTheUserIsSavedAsItStandsInNoZone) {
    ISystemInfo::setSelectedSubModelString("SUB");
    EXPECT_EQ(FakeKovan::journal("write"), std::vector<std::string>{"write " + SELECTED + "=SUB"});
}

TEST_F(SubmodelTest, OfTheUserIsSavedWithTheLetterOfTheModelInAZone) {
    setZone('K');
    ISystemInfo::setSelectedSubModelString("KUB");
    EXPECT_EQ(textSetting(SELECTED), "TUB");
}

TEST_F(SubmodelTest, OfTheUserIsNoneWhenItIsTheModel) {
    FakeKovan::setSetting(SELECTED, "SUB");
    ISystemInfo::setSelectedSubModelString("T-MARLOW");
    EXPECT_EQ(textSetting(SELECTED), "");
}

TEST_F(SubmodelTest, OfTheUserIsNoneWhenItIsTheModelWithAnotherLetterInAZone) {
    setZone('K');
    for (const std::string submodel : {"K-MARLOW", "T-MARLOW", "X-MARLOW"}) {
        FakeKovan::setSetting(SELECTED, "SUB");
        ISystemInfo::setSelectedSubModelString(submodel);
        EXPECT_EQ(textSetting(SELECTED), "");
    }
}

TEST_F(SubmodelTest, OfTheUserWithAnotherLetterIsAnotherSubmodelInNoZone) {
    ISystemInfo::setSelectedSubModelString("K-MARLOW");
    EXPECT_EQ(textSetting(SELECTED), "K-MARLOW");
}

TEST_F(SubmodelTest, OfTheUserMustNotBeEmpty) {
    FakeKovan::setSetting(SELECTED, "SUB");
    ISystemInfo::setSelectedSubModelString("");
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log ERR Not expected submodel string, should not be empty here"));
    EXPECT_THAT(FakeKovan::systemInfoReads(), IsEmpty());
    EXPECT_EQ(textSetting(SELECTED), "SUB");
}

TEST_F(SubmodelTest, OfTheUserIsNotSavedInAZoneWithoutAModel) {
    setZone('K');
    FakeKovan::setSystemInfo(128, "-1703.1");
    EXPECT_THROW(ISystemInfo::setSelectedSubModelString("KUB"), std::out_of_range);
    EXPECT_THAT(FakeKovan::writes(), IsEmpty());
}

TEST_F(SubmodelTest, OfTheUserIsSavedWithoutAModelInNoZone) {
    FakeKovan::setSystemInfo(128, "-1703.1");
    ISystemInfo::setSelectedSubModelString("SUB");
    EXPECT_EQ(textSetting(SELECTED), "SUB");
}

TEST_F(SubmodelTest, OfTheUserIsLoggedWhenItCannotBeSaved) {
    FakeKovan::failWrites(SELECTED, -9);
    EXPECT_NO_THROW(ISystemInfo::setSelectedSubModelString("SUB"));
    expectLoggedWithDiagnostic(SELECTED, "Error while saving selected submodel string");
}

TEST_F(SubmodelTest, IsFoundAsTheStoreSays) {
    for (const bool found : {true, false}) {
        FakeKovan::setSetting(ANY, found);
        EXPECT_EQ(ISystemInfo::isAnySubmodelFound(), found);
    }
}

TEST_F(SubmodelTest, IsNotFoundWhenTheStoreFails) {
    EXPECT_FALSE(ISystemInfo::isAnySubmodelFound());
    EXPECT_THAT(FakeKovan::journal(), ElementsAre(failedReadOr(ANY)));
}

TEST_F(SubmodelTest, HasItsFlagSaved) {
    ISystemInfo::setAnySubmodelFlag(true);
    ISystemInfo::setAnySubmodelFlag(false);
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("write " + ANY + "=true", "write " + ANY + "=false"));
}

TEST_F(SubmodelTest, HasItsFlagLoggedWhenItCannotBeSaved) {
    FakeKovan::failWrites(ANY, -9);
    EXPECT_NO_THROW(ISystemInfo::setAnySubmodelFlag(true));
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("write " + ANY + "=true -> -9", failedWrite(ANY),
                                                  "log ERR Error while saving any submodel flag"));
}

} // namespace
} // namespace DAX::Tests
