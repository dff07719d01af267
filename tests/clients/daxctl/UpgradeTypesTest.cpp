#include "daxctl/UpgradeTypes.h"

#include <gtest/gtest.h>

namespace DAX::Tests {
namespace {

using dax::UpgradeType;

TEST(UpgradeTypes, AreNamedEach) {
    EXPECT_EQ(daxctl::upgradeTypeName(UpgradeType::UNDEFINED), "UNDEFINED");
    EXPECT_EQ(daxctl::upgradeTypeName(UpgradeType::OTA), "OTA");
    EXPECT_EQ(daxctl::upgradeTypeName(UpgradeType::OTN), "OTN");
    EXPECT_EQ(daxctl::upgradeTypeName(UpgradeType::USB), "USB");
    EXPECT_EQ(daxctl::upgradeTypeName(UpgradeType::POSTPONE), "POSTPONE");
}

TEST(UpgradeTypes, AreNumbersWhenTheyHaveNoName) {
    EXPECT_EQ(daxctl::upgradeTypeName(static_cast<UpgradeType>(7)), "7");
}

} // namespace
} // namespace DAX::Tests
