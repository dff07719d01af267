#include "SystemControlTest.h"

namespace DAX::Tests {
namespace {

using Platform::ISystemControl;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

const std::string KEY = UPDATE_SETTINGS + "was_successfull_upgrade";

class UpgradeHistoryTest : public SystemControlTest {};

TEST_F(UpgradeHistoryTest, KnowsASuccess) {
    FakeKovan::setSetting(KEY, 1);
    EXPECT_TRUE(ISystemControl::wasAnySuccessfulUpgrade());
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log DBG Success getting info about successful upgrade from vconf. Returned value: 1",
                            "log INF Successful upgrade has occurred since the last factory reset."));
}

TEST_F(UpgradeHistoryTest, KnowsNoneForEveryOtherValue) {
    for (const int value : {-1, 0, 2}) {
        FakeKovan::setSetting(KEY, value);
        FakeKovan::forgetRecords();
        EXPECT_FALSE(ISystemControl::wasAnySuccessfulUpgrade());
        EXPECT_THAT(FakeKovan::journal(),
                    ElementsAre("log DBG Success getting info about successful upgrade from vconf. Returned value: " +
                                    std::to_string(value),
                                "log INF Successful upgrade has not occurred since the last factory reset."));
    }
}

TEST_F(UpgradeHistoryTest, TakesAFailedReadForNone) {
    EXPECT_FALSE(ISystemControl::wasAnySuccessfulUpgrade());
    EXPECT_THAT(
        beginning(2),
        ElementsAre(failedRead(KEY),
                    StartsWith("log ERR Exception caught while getting wasAnySuccessfulUpgrade value from VConf: ")));
    EXPECT_THAT(told("ERR"), HasSubstr("VConfException"));
}

TEST_F(UpgradeHistoryTest, BelievesTheParametersWithoutAskingTheStore) {
    parameters().setEmulateWasSuccessfulUpgrade(true);
    FakeKovan::setSetting(KEY, 0);
    EXPECT_TRUE(ISystemControl::wasAnySuccessfulUpgrade());
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log INF CSystemControl::wasAnySuccessfulUpgrade(): emulateWasSuccessfulUpgrade is set. "
                            "The vconf flag is not checked but considered set."));
    EXPECT_THAT(FakeKovan::reads(), IsEmpty());
}

TEST_F(UpgradeHistoryTest, TakesMissingParametersForNone) {
    EXPECT_IN_CHILD({
        FakeKovan::setSetting(KEY, 1);
        root.write(PARTITION + "DebugAndTestParameters.xml", "");
        EXPECT_FALSE(DAXCommon::DebugAndTestParameters::reload()); // a failed read counts as not loaded
        EXPECT_FALSE(ISystemControl::wasAnySuccessfulUpgrade());
        EXPECT_THAT(told("ERR"),
                    HasSubstr("Exception caught while getting wasAnySuccessfulUpgrade value from VConf: "));
        EXPECT_THAT(told("ERR"), HasSubstr("DebugAndTestParameters were not loaded."));
        EXPECT_THAT(FakeKovan::reads(), IsEmpty());
    });
}

TEST_F(UpgradeHistoryTest, KeepsASuccess) {
    ISystemControl::registerSuccessfulUpgrade();
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log INF CSystemControl::registerSuccessfulUpgrade()", "write " + KEY + "=1"));
    EXPECT_TRUE(ISystemControl::wasAnySuccessfulUpgrade());
}

TEST_F(UpgradeHistoryTest, SaysThatASuccessCannotBeKept) {
    FakeKovan::failWrites(KEY, -5);
    EXPECT_NO_THROW(ISystemControl::registerSuccessfulUpgrade());
    EXPECT_THAT(beginning(5),
                ElementsAre("log INF CSystemControl::registerSuccessfulUpgrade()", "write " + KEY + "=1 -> -5",
                            failedWrite(KEY), "log ERR Cannot set the value: \"1\" in vconf variable: \"" + KEY + "\"",
                            StartsWith("log ERR Exception caught while saving wasAnySuccessfulUpgrade in VConf: ")));
    EXPECT_THAT(told("ERR"), HasSubstr("VConfException"));
}

} // namespace
} // namespace DAX::Tests
