#include <cstdlib>

#include "DebugFileFixture.h"
#include "support/Thrown.h"

namespace DAX::Tests {
namespace {

using ::testing::ElementsAre;
using ::testing::ExitedWithCode;

const char NOT_LOADED[] = "DebugAndTestParameters were not loaded.";

class DebugParametersLoad : public DebugFileFixture {};

TEST(DebugParametersStart, NothingIsLoadedBeforeTheLoad) {
    GTEST_FLAG_SET(death_test_style, "threadsafe"); // a process of its own, from its start
    EXPECT_EXIT(std::_Exit(DebugAndTestParameters::loaded() ? 1 : 0), ExitedWithCode(0), "");
}

TEST_F(DebugParametersLoad, TheRecordThrowsBeforeTheLoad) {
    EXPECT_FALSE(DebugAndTestParameters::loaded());
    EXPECT_EQ(thrownDescription([] { DebugAndTestParameters::getDebugAndTestParameters(); }), NOT_LOADED);
    EXPECT_EQ(thrownDescription([] { Common::getDebugAndTestParameters(); }), NOT_LOADED);
    EXPECT_EQ(thrownDescription([] { getInstallationPerformanceParameters(); }), NOT_LOADED);
    EXPECT_EQ(thrownDescription([] { DAXCommon::getDAXParameters().getNoRebootFlag(); }), NOT_LOADED);
    EXPECT_EQ(thrownDescription([] { DAXCommon::getDAXParameters().setNoRebootFlag(true); }), NOT_LOADED);
}

TEST_F(DebugParametersLoad, AMissingFileIsLoggedAndLeavesAllDefaults) {
    DebugAndTestParameters::loadDebugAndTestParameters();
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log DBG Loading DebugAndTestParameters.", opening(),
                                                  "log WRN Failed to open DebugAndTestParameters from " + path()));
    EXPECT_TRUE(DebugAndTestParameters::loaded());
    EXPECT_EQ(DebugAndTestParameters::getDebugAndTestParameters().getCustomStringParam("testParam1"),
              std::string("testStringValue1"));
}

TEST_F(DebugParametersLoad, TheFileIsOnTheUpdatePartition) {
    EXPECT_EQ(path(), (root / "mnt/systemrw/org.kovan.tv.dax/data/tv/DebugAndTestParameters.xml").string());
}

TEST_F(DebugParametersLoad, TakesWhatTheFileSays) {
    write(goldenDebugFile("changed.xml"));
    DebugAndTestParameters::loadDebugAndTestParameters();
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log DBG Loading DebugAndTestParameters.", opening()));
    EXPECT_TRUE(DebugAndTestParameters::getDebugAndTestParameters().isNoRebootFlag());
}

TEST_F(DebugParametersLoad, ABadFileCountsAsLoaded) {
    write("<no XML>");
    DebugAndTestParameters::loadDebugAndTestParameters();
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log DBG Loading DebugAndTestParameters.", opening(), failure("unrecognized XML syntax")));
    EXPECT_TRUE(DebugAndTestParameters::loaded());
    EXPECT_FALSE(DebugAndTestParameters::getDebugAndTestParameters().isNoRebootFlag());
}

TEST_F(DebugParametersLoad, ASecondLoadIsLoggedAndReadsNothing) {
    loaded();
    write(goldenDebugFile("changed.xml"));
    DebugAndTestParameters::loadDebugAndTestParameters();
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log WRN DebugAndTestParameters were already loaded."));
    EXPECT_FALSE(DebugAndTestParameters::getDebugAndTestParameters().isNoRebootFlag());
}

TEST_F(DebugParametersLoad, ASecondLoadIsLoggedAsSuchEvenInProduction) {
    loaded();
    FakeKovan::setProduction(true);
    DebugAndTestParameters::loadDebugAndTestParameters();
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log WRN DebugAndTestParameters were already loaded."));
}

TEST_F(DebugParametersLoad, InProductionTheFileIsIgnored) {
    write(goldenDebugFile("changed.xml"));
    FakeKovan::setProduction(true);
    DebugAndTestParameters::loadDebugAndTestParameters();
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log INF We are in production mode. Will not load DebugAndTestParameters."));
    EXPECT_FALSE(DebugAndTestParameters::loaded());
    EXPECT_FALSE(DebugAndTestParameters::getDebugAndTestParameters().isNoRebootFlag());
    EXPECT_EQ(DAXCommon::getDAXParameters().getServiceTransactionStubScenarioPath(), "");
}

TEST_F(DebugParametersLoad, InProductionTheDefaultsApplyWithoutALoad) {
    FakeKovan::setProduction(true);
    EXPECT_EQ(getInstallationPerformanceParameters().getNetworkStreamBufferSize(), 1048576U);
    EXPECT_EQ(DAXCommon::getDAXParameters().getServiceTransactionStubScenarioPath(), "");
}

TEST_F(DebugParametersLoad, EveryAccessorReturnsTheOneRecord) {
    DebugAndTestParameters& record = loaded();
    EXPECT_EQ(&DebugAndTestParameters::getDebugAndTestParameters(), &record);
    EXPECT_EQ(&Common::getDebugAndTestParameters(), &record);
    EXPECT_EQ(&getInstallationPerformanceParameters(), &record.getInstallationPerformanceParameters());
    EXPECT_EQ(&DAXCommon::getDAXParameters(), &DAXCommon::getDAXParameters());
}

TEST_F(DebugParametersLoad, OfAnObjectLeavesTheOneRecordAlone) {
    const DebugAndTestParameters& record = loaded();
    write(goldenDebugFile("changed.xml"));
    DebugAndTestParameters other;
    EXPECT_TRUE(other.load());
    EXPECT_TRUE(other.isNoRebootFlag());
    EXPECT_FALSE(record.isNoRebootFlag());
}

TEST_F(DebugParametersLoad, OfAnObjectIsFalseWithoutAFile) {
    DebugAndTestParameters other;
    EXPECT_FALSE(other.load());
    EXPECT_FALSE(DebugAndTestParameters::loaded());
}

} // namespace
} // namespace DAX::Tests
