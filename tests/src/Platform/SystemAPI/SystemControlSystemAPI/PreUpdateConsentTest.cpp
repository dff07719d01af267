#include "SystemControlTest.h"

namespace DAX::Tests {
namespace {

using Platform::ISystemControl;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

const std::string KEY = UPDATE_SETTINGS + "preupdate_consent";

class PreUpdateConsentTest : public SystemControlTest {
protected:
    PreUpdateConsentTest() { makeTelevision(); }
};

TEST_F(PreUpdateConsentTest, IsRequiredUntilTheUserSaysOtherwise) {
    for (const int value : {0, 1, 2, 3, 4}) {
        FakeKovan::setSetting(KEY, value);
        EXPECT_EQ(ISystemControl::isPreUpdateConsentRequired(), value == 0 || value == 2) << value;
    }
}

TEST_F(PreUpdateConsentTest, IsSetByEveryValueButZero) {
    EXPECT_FALSE(ISystemControl::isPreUpdateConsentSet());
    EXPECT_THAT(FakeKovan::journal(), ElementsAre(failedReadOr(KEY)));
    for (const int value : {0, 1, 2}) {
        FakeKovan::setSetting(KEY, value);
        EXPECT_EQ(ISystemControl::isPreUpdateConsentSet(), value != 0) << value;
    }
}

TEST_F(PreUpdateConsentTest, IsKept) {
    ISystemControl::setPreUpdateConsentRequired(true);
    ISystemControl::setPreUpdateConsentRequired(false);
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("write " + KEY + "=2", "write " + KEY + "=1"));
}

TEST_F(PreUpdateConsentTest, SaysThatItCannotBeKept) {
    FakeKovan::failWrites(KEY, -1);
    EXPECT_NO_THROW(ISystemControl::setPreUpdateConsentRequired(true));
    EXPECT_THAT(beginning(3), ElementsAre("write " + KEY + "=2 -> -1", failedWrite(KEY),
                                          StartsWith("log ERR Error while saving pre-update consent value")));
    EXPECT_THAT(told("ERR"), HasSubstr("VConfException"));
}

TEST_F(PreUpdateConsentTest, IsRequiredWhenItCannotBeRead) {
    EXPECT_TRUE(ISystemControl::isPreUpdateConsentRequired());
    EXPECT_THAT(beginning(4),
                ElementsAre("log INF B2B support option is inactive.", "log INF Product Type: 0", failedRead(KEY),
                            StartsWith("log ERR Error while getting pre-update consent value")));
    EXPECT_THAT(told("ERR"), HasSubstr("VConfException"));
}

TEST_F(PreUpdateConsentTest, IsNeitherReadNorRequiredOnADeviceThatUpdatesByItself) {
    FakeKovan::setSystemInfo(B2B_FEATURE, true);
    FakeKovan::setSetting(KEY, 2);
    EXPECT_FALSE(ISystemControl::isPreUpdateConsentRequired());
    EXPECT_THAT(FakeKovan::reads(), IsEmpty());
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log INF B2B support option is active.",
                                                  "log INF TBM, B2B or AUDIO device -> force to false"));
}

} // namespace
} // namespace DAX::Tests
