#include "DAXCommon/UpgradeTypeNames.h"

#include <gmock/gmock.h>

#include "DAXCommon/DAXCommonUtils.h"
#include "support/ProcessDeath.h"

using namespace DAX::DAXCommon;
using DAX::DAXCommon::DAXCommonUtils::upgradeTypeToString;
using testing::ElementsAre;
using testing::Pair;

namespace {

TEST(UpgradeTypeToString, NamesTheFourTypes) {
    EXPECT_EQ(upgradeTypeToString(UpgradeType(1)), "OTA");
    EXPECT_EQ(upgradeTypeToString(UpgradeType(2)), "OTN");
    EXPECT_EQ(upgradeTypeToString(UpgradeType(3)), "USB");
    EXPECT_EQ(upgradeTypeToString(UpgradeType(4)), "POSTPONE");
}

TEST(UpgradeTypeToString, DoesNotKnowUndefined) {
    EXPECT_ASSERTION_WITHOUT_MSG(upgradeTypeToString(UNDEFINED), "false");
}

TEST(UpgradeTypeToString, FailsAnAssertionBeyondTheLastType) {
    EXPECT_ASSERTION_WITHOUT_MSG(upgradeTypeToString(UpgradeType(5)), "false");
}

TEST(UpgradeTypeToString, FailsAnAssertionBelowTheFirstType) {
    EXPECT_ASSERTION_WITHOUT_MSG(upgradeTypeToString(UpgradeType(-1)), "false");
}

TEST(UpgradeTypeNames, KnowUndefinedToo) {
    EXPECT_THAT(upgradeTypeNames(), ElementsAre(Pair(UNDEFINED, "UNDEFINED"), Pair(OTA, "OTA"), Pair(OTN, "OTN"),
                                                Pair(USB, "USB"), Pair(POSTPONE, "POSTPONE")));
}

TEST(UpgradeTypeNames, LeadBackToTheirTypes) {
    EXPECT_THAT(upgradeTypesByName(), ElementsAre(Pair("OTA", OTA), Pair("OTN", OTN), Pair("POSTPONE", POSTPONE),
                                                  Pair("UNDEFINED", UNDEFINED), Pair("USB", USB)));
}

} // namespace
