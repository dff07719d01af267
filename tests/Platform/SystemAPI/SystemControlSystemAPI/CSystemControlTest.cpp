#include "Platform/SystemAPI/SystemControlSystemAPI/ISystemControl.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/FakeKovan.h"

namespace DAX {
namespace Tests {
namespace {

using Platform::ISystemControl;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;

const char UPGRADED_KEY[] = "db/menu/support/softwareupdate/was_successfull_upgrade";
const char CELLULAR_KEY[] = "db/menu/support/softwareupdate/use_cellular_int";

TEST(CSystemControl, DescribesItsRevision) {
    EXPECT_STREQ(ISystemControl::DAXRevisionDescription(),
                 "Changelist: 0, EmulatedProductVersion: ., UI_TYPE=EFL_UI, CMakeTime: 1764727676");
}

TEST(CSystemControl, AllowsTheCellularConnectionForTheValueOneAlone) {
    for (const int value : {-1, 0, 2}) {
        FakeKovan::setSetting(CELLULAR_KEY, value);
        EXPECT_FALSE(ISystemControl::isCellularConnectionAllowed()) << value;
    }
    FakeKovan::setSetting(CELLULAR_KEY, 1);
    EXPECT_TRUE(ISystemControl::isCellularConnectionAllowed());
    EXPECT_THAT(FakeKovan::messages(), IsEmpty());
}

TEST(CSystemControl, AllowsNoCellularConnectionWithoutTheSetting) {
    EXPECT_FALSE(ISystemControl::isCellularConnectionAllowed());
    EXPECT_THAT(FakeKovan::journal(), ElementsAre(std::string("log WRN vconf_get failed while trying to access key: ") +
                                                  CELLULAR_KEY + ", return default value"));
}

TEST(CSystemControl, SaysThatAnUpgradeSucceeded) {
    FakeKovan::setSetting(UPGRADED_KEY, 1);
    EXPECT_TRUE(ISystemControl::wasAnySuccessfulUpgrade());
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log DBG Success getting info about successful upgrade from vconf. Returned value: 1",
                            "log INF Successful upgrade has occurred since the last factory reset."));
}

TEST(CSystemControl, SaysThatNoUpgradeSucceededForEveryOtherValue) {
    FakeKovan::setSetting(UPGRADED_KEY, 2);
    EXPECT_FALSE(ISystemControl::wasAnySuccessfulUpgrade());
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log DBG Success getting info about successful upgrade from vconf. Returned value: 2",
                            "log INF Successful upgrade has not occurred since the last factory reset."));
}

TEST(CSystemControl, TakesAFailedReadForNoUpgrade) {
    EXPECT_FALSE(ISystemControl::wasAnySuccessfulUpgrade());
    EXPECT_EQ(FakeKovan::messages().front(),
              std::string("vconf_get failed while trying to access key: ") + UPGRADED_KEY);
    EXPECT_THAT(FakeKovan::messages("ERR").front(),
                StartsWith("Exception caught while getting wasAnySuccessfulUpgrade value from VConf: "));
    EXPECT_EQ(FakeKovan::countContaining("ERR", "vconf_get failed while trying to access key: "), 1);
}

} // namespace
} // namespace Tests
} // namespace DAX
