#include "DebugFileFixture.h"
#include "support/Thrown.h"

namespace DAX::Tests {
namespace {

using ::testing::ElementsAre;

class DebugParametersReload : public DebugFileFixture {};

TEST_F(DebugParametersReload, BeforeTheLoadIsAnError) {
    write(goldenDebugFile("changed.xml"));
    EXPECT_EQ(thrownDescription([] { DebugAndTestParameters::reload(); }), "load DebugAndTestParameters before reload");
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log ERR DebugAndTestParameters not yet loaded - use loadDebugAndTestParameters() first"));
    EXPECT_FALSE(DebugAndTestParameters::loaded());
}

TEST_F(DebugParametersReload, InProductionIsAnErrorToo) {
    FakeKovan::setProduction(true);
    DebugAndTestParameters::loadDebugAndTestParameters();
    EXPECT_EQ(thrownDescription([] { DebugAndTestParameters::reload(); }), "load DebugAndTestParameters before reload");
}

TEST_F(DebugParametersReload, TakesWhatTheFileSaysNow) {
    const DebugAndTestParameters& record = loaded();
    write(goldenDebugFile("changed.xml"));
    EXPECT_TRUE(DebugAndTestParameters::reload());
    EXPECT_THAT(FakeKovan::journal(), ElementsAre(opening()));
    EXPECT_TRUE(DebugAndTestParameters::loaded());
    EXPECT_TRUE(record.isNoRebootFlag());
}

TEST_F(DebugParametersReload, WithoutAFileLeavesAllAsItWas) {
    loaded().setNoRebootFlag(true);
    EXPECT_FALSE(DebugAndTestParameters::reload());
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre(opening(), "log WRN Failed to open DebugAndTestParameters from " + path()));
    EXPECT_TRUE(DebugAndTestParameters::loaded());
    EXPECT_TRUE(DebugAndTestParameters::getDebugAndTestParameters().isNoRebootFlag());
}

TEST_F(DebugParametersReload, OfABadFileLeavesTheParametersNotLoaded) {
    loaded();
    write("<no XML>");
    EXPECT_FALSE(DebugAndTestParameters::reload());
    EXPECT_THAT(FakeKovan::journal(), ElementsAre(opening(), failure("unrecognized XML syntax")));
    EXPECT_FALSE(DebugAndTestParameters::loaded());
    EXPECT_EQ(thrownDescription([] { DebugAndTestParameters::getDebugAndTestParameters(); }),
              "DebugAndTestParameters were not loaded.");
}

TEST_F(DebugParametersReload, AfterABadFileTheyCanBeLoadedAgain) {
    loaded();
    write("<no XML>");
    EXPECT_FALSE(DebugAndTestParameters::reload());
    write(goldenDebugFile("changed.xml"));
    EXPECT_TRUE(loaded().isNoRebootFlag());
}

} // namespace
} // namespace DAX::Tests
