// The content of the file, for each class version.
#include "DebugFileFixture.h"

namespace DAX::Tests {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Text = boost::optional<std::string>;

// A record in which everything that a file can hold differs from its default.
DebugAndTestParameters changedRecord() {
    DebugAndTestParameters record;
    record.setNoRebootFlag(true);
    record.setSkipCompatibilityChecker(true);
    record.setSkipVersionChecker(true);
    record.setSkipIntegrityChecker(true);
    record.setDontSwitchPartitions(true);
    record.setEmulateWasSuccessfulUpgrade(true);
    record.setTestTransformationFailure(true);
    record.setUseOTNTestServer(true);
    record.setNumberOfFailures(18446744073709551615UL);
    record.setDurationReduced(true);
    record.setOTASetServiceOption(-12);
    record.setCustomStringParam("testParam0", boost::none);
    record.setCustomStringParam("testParam1", Text("<&>'\"\n"));
    record.setCustomIntParam("number", 7);
    return record;
}

class DebugFile : public DebugFileFixture {};

TEST_F(DebugFile, IsWhatSavingHasAlwaysWritten) {
    EXPECT_TRUE(DebugAndTestParameters().save());
    EXPECT_EQ(written(), goldenDebugFile("defaults.xml"));
    EXPECT_THAT(FakeKovan::journal(), IsEmpty());
}

TEST_F(DebugFile, OfTheDefaultsReadsAsTheDefaults) {
    write(goldenDebugFile("defaults.xml"));
    DebugAndTestParameters parameters = changedRecord();
    EXPECT_TRUE(parameters.load());
    EXPECT_TRUE(parameters.save());
    EXPECT_EQ(written(), goldenDebugFile("defaults.xml"));
}

TEST_F(DebugFile, WithEverythingChangedReadsAndWritesAsItIs) {
    write(goldenDebugFile("changed.xml"));
    DebugAndTestParameters parameters;
    EXPECT_TRUE(parameters.load());
    std::filesystem::remove(path());
    EXPECT_TRUE(parameters.save());
    EXPECT_EQ(written(), goldenDebugFile("changed.xml"));
}

TEST_F(DebugFile, KeepsWhatTheSettersSet) {
    EXPECT_TRUE(changedRecord().save());
    DebugAndTestParameters read;
    EXPECT_TRUE(read.load());
    EXPECT_EQ(read.getNumberOfFailures(), 18446744073709551615UL);
    EXPECT_EQ(read.getOTASetServiceOption(), -12);
    EXPECT_EQ(read.getCustomStringParam("testParam0"), Text());
    EXPECT_EQ(read.getCustomStringParam("testParam1"), Text("<&>'\"\n"));
    EXPECT_EQ(read.getCustomIntParam("number"), 7);
}

TEST_F(DebugFile, OfVersion0HoldsNumbersThatReadAsText) {
    write(goldenDebugFile("version0.xml"));
    const DebugAndTestParameters& parameters = loaded();
    EXPECT_EQ(parameters.getCustomStringParam("seven"), Text("7"));
    EXPECT_EQ(parameters.getCustomStringParam("negative"), Text("-2147483648"));
    EXPECT_EQ(parameters.getCustomIntParam("seven"), 7);
}

TEST_F(DebugFile, OfVersion0LeavesTheOtherFreeParameters) {
    write(goldenDebugFile("version0.xml"));
    EXPECT_EQ(loaded().getCustomStringParam("testParam1"), Text("testStringValue1"));
}

TEST_F(DebugFile, OfVersion0IsSavedAsVersion1) {
    write(goldenDebugFile("version0.xml"));
    EXPECT_TRUE(loaded().save());
    EXPECT_THAT(written(),
                ::testing::HasSubstr("<DebugAndTestParameters class_id=\"0\" tracking_level=\"0\" version=\"1\">"));
    EXPECT_THAT(written(), ::testing::HasSubstr("<first>seven</first>\n\t\t\t<second>7</second>"));
}

TEST_F(DebugFile, OfVersion1ReplacesTheFreeParameters) {
    write(goldenDebugFile("changed.xml"));
    EXPECT_EQ(loaded().getCustomStringParam("testParam0"), Text());
}

TEST_F(DebugFile, WithoutAFolderCannotBeSaved) {
    std::filesystem::remove_all(std::filesystem::path(path()).parent_path());
    EXPECT_FALSE(DebugAndTestParameters().save());
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log WRN Failed to save DebugAndTestParameters to " + path() + ": output stream error"));
}

TEST_F(DebugFile, OnAFullMediumCannotBeSaved) {
    std::filesystem::create_symlink("/dev/full", path());
    EXPECT_FALSE(DebugAndTestParameters().save());
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log WRN Failed to save DebugAndTestParameters to " + path() + ": output stream error"));
}

} // namespace
} // namespace DAX::Tests
