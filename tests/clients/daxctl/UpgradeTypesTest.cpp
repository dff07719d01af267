#include "daxctl/UpgradeTypes.h"

#include <gtest/gtest.h>

namespace DAX::Tests {
namespace {

using namespace DAXCommon;

TEST(UpgradeTypes, AreNamedEach) {
    EXPECT_EQ(daxctl::upgradeTypeName(UNDEFINED), "UNDEFINED");
    EXPECT_EQ(daxctl::upgradeTypeName(OTA), "OTA");
    EXPECT_EQ(daxctl::upgradeTypeName(OTN), "OTN");
    EXPECT_EQ(daxctl::upgradeTypeName(USB), "USB");
    EXPECT_EQ(daxctl::upgradeTypeName(POSTPONE), "POSTPONE");
}

TEST(UpgradeTypes, AreNumbersWhenTheyHaveNoName) {
    EXPECT_EQ(daxctl::upgradeTypeName(static_cast<UpgradeType>(7)), "7");
}

} // namespace
} // namespace DAX::Tests
