#include <boost/filesystem/exception.hpp>

#include "Common/IO/FileExceptions.h"
#include "SystemControlTest.h"
#include "support/OtherPartition.h"

namespace DAX::Tests {
namespace {

using Platform::ISystemControl;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

const char FINALIZING_TEXT[] =
    "This flag file means, that some upgrade might be performed.\n"
    "Initially it is prepared to use with /opt/kovan-mobile-ui-sh script.\n"
    "DO NOT USE IT AFTER multi-user target IS STARTED! CHECKING THIS FLAG AFTER multi-user target IS STARTED CREATES "
    "RACE CONDITION.\n";

class FlagFilesTest : public SystemControlTest {
protected:
    const std::string finalizing = PARTITION + "DAXFinalizingUpgradeFlag";
    const std::string reset = PARTITION + "DAXFactoryResetFlag";
};

TEST_F(FlagFilesTest, TellThatAnUpgradeIsBeingFinalized) {
    ISystemControl::setDAXFinalizingUpgradeFlag(true);
    EXPECT_EQ(root.read(finalizing), FINALIZING_TEXT);
    EXPECT_EQ(root.read(finalizing).size(), 60U + 69U + 128U);
    ISystemControl::setDAXFinalizingUpgradeFlag(false);
    EXPECT_FALSE(isThere(finalizing));
    EXPECT_EQ(FakeKovan::messages("INF").front(), "Setting DAX finalizing upgrade flag: 1.");
    EXPECT_EQ(FakeKovan::count("INF", "Setting DAX finalizing upgrade flag: 0."), 1);
}

TEST_F(FlagFilesTest, StayAsTheyAreWhenTheyAreSetAgain) {
    root.write(finalizing, "as it was");
    root.write(reset, "as it was");
    ISystemControl::setDAXFinalizingUpgradeFlag(true);
    ISystemControl::setDAXResetFlag(true);
    EXPECT_EQ(root.read(finalizing), "as it was");
    EXPECT_EQ(root.read(reset), "as it was");
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log INF Setting DAX finalizing upgrade flag: 1.", "log INF Setting DAX reset flag: 1."));
}

TEST_F(FlagFilesTest, AreReleasedWhenTheyAreNotSet) {
    ISystemControl::setDAXFinalizingUpgradeFlag(false);
    ISystemControl::setDAXResetFlag(false);
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log INF Setting DAX finalizing upgrade flag: 0.", "log INF Setting DAX reset flag: 0."));
}

TEST_F(FlagFilesTest, TellThatAFactoryResetIsToCome) {
    EXPECT_FALSE(ISystemControl::getDAXResetFlag());
    ISystemControl::setDAXResetFlag(true);
    EXPECT_TRUE(ISystemControl::getDAXResetFlag());
    EXPECT_TRUE(isThere(reset));
    EXPECT_EQ(root.read(reset), "");
    ISystemControl::setDAXResetFlag(false);
    EXPECT_FALSE(isThere(reset));
    EXPECT_EQ(FakeKovan::count("INF", "Getting state of DAX reset flag: 0."), 1);
    EXPECT_EQ(FakeKovan::count("INF", "Getting state of DAX reset flag: 1."), 1);
    EXPECT_EQ(FakeKovan::count("INF", "Setting DAX reset flag: 1."), 1);
}

TEST_F(FlagFilesTest, CannotBeWrittenWithoutTheirPartition) {
    std::filesystem::remove_all(root / PARTITION);
    EXPECT_THROW(ISystemControl::setDAXFinalizingUpgradeFlag(true), Common::IO::FileSinkIOException);
    EXPECT_THROW(ISystemControl::setDAXResetFlag(true), Common::IO::FileSinkIOException);
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log INF Setting DAX finalizing upgrade flag: 1.", "log INF Setting DAX reset flag: 1."));
}

TEST_F(FlagFilesTest, CannotBeReleasedWhenTheyCannotBeRemoved) {
    std::filesystem::create_directories(root / (finalizing + "/something"));
    std::filesystem::create_directories(root / (reset + "/something"));
    EXPECT_THROW(ISystemControl::setDAXFinalizingUpgradeFlag(false), boost::filesystem::filesystem_error);
    EXPECT_THROW(ISystemControl::setDAXResetFlag(false), boost::filesystem::filesystem_error);
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log INF Setting DAX finalizing upgrade flag: 0.", "log INF Setting DAX reset flag: 0."));
}

class ModifiedPartitionsTest : public SystemControlTest {
protected:
    const std::string slots[2] = {PARTITION + "ModifiedPartitionsMarker", BIG_TEMP + "ModifiedPartitionsMarker"};
};

TEST_F(ModifiedPartitionsTest, AreMarkedInEverySlot) {
    EXPECT_FALSE(ISystemControl::isModifiedPartitionsMarkerSet());
    ISystemControl::setModifiedPartitionsMarker("which nobody looks at");
    for (const std::string& slot : slots) {
        EXPECT_TRUE(isThere(slot));
        EXPECT_EQ(root.read(slot), "");
    }
    EXPECT_TRUE(ISystemControl::isModifiedPartitionsMarkerSet());
    ISystemControl::removeModifiedPartitionsMarker();
    for (const std::string& slot : slots) {
        EXPECT_FALSE(isThere(slot));
    }
    EXPECT_FALSE(ISystemControl::isModifiedPartitionsMarkerSet());
}

TEST_F(ModifiedPartitionsTest, AreMarkedByOneSlot) {
    for (const std::string& slot : slots) {
        root.write(slot, "");
        EXPECT_TRUE(ISystemControl::isModifiedPartitionsMarkerSet());
        ISystemControl::removeModifiedPartitionsMarker();
        EXPECT_FALSE(ISystemControl::isModifiedPartitionsMarkerSet());
    }
}

TEST_F(ModifiedPartitionsTest, AreMarkedWhereThatIsPossible) {
    const std::string folders[] = {PARTITION, BIG_TEMP};
    for (int broken : {0, 1}) {
        std::filesystem::remove_all(root / folders[broken]);
        ISystemControl::setModifiedPartitionsMarker("");
        EXPECT_THAT(FakeKovan::messages("FTL"),
                    ElementsAre(StartsWith("Exception caught while trying to setModifiedPartitionsMarker slot " +
                                           std::to_string(broken) + ": ")));
        EXPECT_TRUE(isThere(slots[1 - broken]));
        EXPECT_TRUE(ISystemControl::isModifiedPartitionsMarkerSet());
        std::filesystem::create_directories(root / folders[broken]);
        ISystemControl::removeModifiedPartitionsMarker();
        FakeKovan::forgetRecords();
    }
}

TEST_F(ModifiedPartitionsTest, CannotBeMarkedWhenNoSlotCanBeWritten) {
    std::filesystem::remove_all(root / PARTITION);
    std::filesystem::remove_all(root / BIG_TEMP);
    EXPECT_EQ(thrownDescription([] { ISystemControl::setModifiedPartitionsMarker(""); }),
              "Could not set ModifiedPartitionsMarker on any avilable slot");
    EXPECT_THAT(FakeKovan::messages("FTL"),
                ElementsAre(StartsWith("Exception caught while trying to setModifiedPartitionsMarker slot 0: "),
                            StartsWith("Exception caught while trying to setModifiedPartitionsMarker slot 1: ")));
}

TEST_F(ModifiedPartitionsTest, KeepThePlacesOfTheirMarkers) {
    ISystemControl::setModifiedPartitionsMarker("");
    const OtherPartition other((root / "other").string());
    EXPECT_TRUE(ISystemControl::isModifiedPartitionsMarkerSet());
}

TEST_F(ModifiedPartitionsTest, CanBeReleasedWhenTheyAreNotMarked) {
    ISystemControl::removeModifiedPartitionsMarker();
    EXPECT_THAT(FakeKovan::journal(), IsEmpty());
}

TEST_F(ModifiedPartitionsTest, TellThatAMarkerCannotBeRemovedWhenAllWereTried) {
    for (int broken : {0, 1}) {
        root.write(slots[1 - broken], "");
        std::filesystem::create_directories(root / (slots[broken] + "/something"));
        EXPECT_THROW(ISystemControl::removeModifiedPartitionsMarker(), boost::filesystem::filesystem_error) << broken;
        EXPECT_FALSE(isThere(slots[1 - broken])) << broken;
        std::filesystem::remove_all(root / slots[broken]);
    }
    EXPECT_THAT(FakeKovan::journal(), IsEmpty());
}

TEST_F(ModifiedPartitionsTest, TellEachMarkerThatCannotBeRemoved) {
    std::filesystem::create_directories(root / (slots[0] + "/something"));
    std::filesystem::create_directories(root / (slots[1] + "/something"));
    try {
        ISystemControl::removeModifiedPartitionsMarker();
        FAIL() << "nothing was thrown";
    } catch (const boost::filesystem::filesystem_error& error) {
        EXPECT_EQ(error.path1(), (root / slots[0]).string());
    }
    EXPECT_EQ(FakeKovan::countContaining("ERR", "Exception caught while trying to removeModifiedPartitionsMarker: "),
              1);
    EXPECT_EQ(FakeKovan::countContaining("ERR", (root / slots[1]).string()), 1);
}

TEST_F(ModifiedPartitionsTest, AreMarkedThoughAnotherSlotCannotBeLookedAt) {
    for (int broken : {0, 1}) {
        std::filesystem::create_symlink(root / slots[broken], root / slots[broken]); // a link to itself
        EXPECT_THROW(ISystemControl::isModifiedPartitionsMarkerSet(), boost::filesystem::filesystem_error) << broken;
        root.write(slots[1 - broken], "");
        EXPECT_TRUE(ISystemControl::isModifiedPartitionsMarkerSet()) << broken;
        std::filesystem::remove(root / slots[broken]);
        std::filesystem::remove(root / slots[1 - broken]);
    }
}

} // namespace
} // namespace DAX::Tests
