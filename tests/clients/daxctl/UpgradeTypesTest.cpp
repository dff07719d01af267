#include "daxctl/UpgradeTypes.h"

#include <gmock/gmock.h>

namespace DAX {
namespace Tests {
namespace {

using namespace DAXCommon;
using testing::ElementsAre;
using testing::Pair;

TEST(UpgradeTypes, HaveTheNamesThatPeopleUse) {
    EXPECT_THAT(daxctl::upgradeTypesByName(),
                ElementsAre(Pair("OTA", OTA), Pair("OTN", OTN), Pair("POSTPONE", POSTPONE),
                            Pair("UNDEFINED", UNDEFINED), Pair("USB", USB)));
}

TEST(UpgradeTypes, AreNamedEach) {
    for (const auto& [name, type] : daxctl::upgradeTypesByName()) {
        EXPECT_EQ(daxctl::upgradeTypeName(type), name);
    }
}

TEST(UpgradeTypes, AreNumbersWhenTheyHaveNoName) {
    EXPECT_EQ(daxctl::upgradeTypeName(static_cast<UpgradeType>(7)), "7");
}

} // namespace
} // namespace Tests
} // namespace DAX
