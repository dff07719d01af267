#include "SystemInfoFixture.h"

namespace DAX::Tests {
namespace {

using Platform::ISystemInfo;
using Platform::VConfException;
using testing::ElementsAre;

const std::string TERMS = "db/menu/home_deck/homedatacontrol/defaultdisclaimeragree";
const std::string CONTRAST = "db/menu/system/accessibility/highcontrast";
const std::string TIMEOUT = "db/menu/time-to-take-action";

TEST(TermsConditionsTest, AreAcceptedByTheValueOne) {
    for (const int value : {0, 1, 2, -1}) {
        FakeKovan::reset();
        FakeKovan::setSetting(TERMS, value);
        EXPECT_EQ(ISystemInfo::isTermsConditionsAccepted(), value == 1) << value;
        EXPECT_THAT(FakeKovan::journal(), ElementsAre("log DBG Terms&Conditions: " + std::to_string(value)));
    }
}

TEST(TermsConditionsTest, ThrowWhatTheStoreThrows) {
    EXPECT_THROW(ISystemInfo::isTermsConditionsAccepted(), VConfException);
    EXPECT_THAT(FakeKovan::journal(), ElementsAre(failedRead(TERMS)));
}

TEST(HighContrastTest, IsEveryValueButZero) {
    for (const int value : {0, 1, 2, -1}) {
        FakeKovan::reset();
        FakeKovan::setSetting(CONTRAST, value);
        EXPECT_EQ(ISystemInfo::isHighContrastMode(), value != 0) << value;
        EXPECT_THAT(FakeKovan::journal(),
                    ElementsAre("log DBG Debug only log: highcontrast is " + std::to_string(value)));
    }
}

TEST(HighContrastTest, ThrowsWhatTheStoreThrows) {
    EXPECT_THROW(ISystemInfo::isHighContrastMode(), VConfException);
    EXPECT_THAT(FakeKovan::journal(), ElementsAre(failedRead(CONTRAST)));
}

struct Timeout {
    int kind;
    int seconds;
};

class AccessibilityTimeoutTest : public testing::TestWithParam<Timeout> {};

TEST_P(AccessibilityTimeoutTest, IsThatOfItsKind) {
    FakeKovan::setSetting(TIMEOUT, GetParam().kind);
    EXPECT_EQ(ISystemInfo::getAccessibilityActCustomTimeout(77), GetParam().seconds);
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log DBG AccessibilityAct timeout type: " + std::to_string(GetParam().kind)));
}

INSTANTIATE_TEST_SUITE_P(Of, AccessibilityTimeoutTest,
                         testing::Values(Timeout{0, 77}, Timeout{1, 60}, Timeout{2, 120}, Timeout{5, 300},
                                         Timeout{10, 600}),
                         [](const auto& row) { return "Kind" + std::to_string(row.param.kind); });

TEST(AccessibilityTimeout, IsTheDefaultForAnInvalidKind) {
    for (const int kind : {3, 4, 11, -1}) {
        FakeKovan::reset();
        FakeKovan::setSetting(TIMEOUT, kind);
        EXPECT_EQ(ISystemInfo::getAccessibilityActCustomTimeout(77), 77);
        const std::string text = std::to_string(kind);
        EXPECT_THAT(FakeKovan::journal(), ElementsAre("log DBG AccessibilityAct timeout type: " + text,
                                                      "log ERR Invalid AccessibilityAct timeout type: " + text +
                                                          ". Returning default value."));
    }
}

TEST(AccessibilityTimeout, IsTheDefaultWhenItsKindCannotBeRead) {
    EXPECT_EQ(ISystemInfo::getAccessibilityActCustomTimeout(77), 77);
    EXPECT_THAT(FakeKovan::journal(), ElementsAre(failedReadOr(TIMEOUT), "log DBG AccessibilityAct timeout type: 0"));
}

} // namespace
} // namespace DAX::Tests
