#include "Platform/SystemAPI/FactorySystemAPI/Implementation/FactoryItems.h"

#include "FactorySettingsFixture.h"
#include "support/NamedRow.h"
#include "support/ProcessDeath.h"

namespace DAX::Tests {
namespace {

using Platform::getIntFromFactory;
using testing::ElementsAre;
using testing::IsEmpty;

struct Item : NamedRow {
    int key;
    int defaultValue;
};

class FactoryItemTest : public testing::TestWithParam<Item> {
protected:
    const system_info_key_e key = static_cast<system_info_key_e>(GetParam().key);
    const std::string heading = std::to_string(GetParam().key) + " (" + GetParam().name + ")";
};

TEST_P(FactoryItemTest, IsTheValueOfTheMenu) {
    FakeKovan::setSystemInfo(GetParam().key, -42);
    EXPECT_EQ(getIntFromFactory(key), -42);
    EXPECT_THAT(FakeKovan::journal(), IsEmpty());
    EXPECT_THAT(FakeKovan::systemInfoReads(), ElementsAre(std::to_string(GetParam().key)));
}

TEST_P(FactoryItemTest, IsItsDefaultWhenItCannotBeRead) {
    FakeKovan::setSystemInfo(GetParam().key, -42);
    FakeKovan::failSystemInfo(GetParam().key, -5);
    EXPECT_EQ(getIntFromFactory(key), GetParam().defaultValue);
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log INF Failed to fetch key " + heading +
                                                  " from factory menu. Default value will be used: " +
                                                  std::to_string(GetParam().defaultValue)));
}

INSTANTIATE_TEST_SUITE_P(Of, FactoryItemTest,
                         testing::Values(Item{"ID_OTN_INFO_LINK_SERVER_TYPE", 126, 1}, Item{"ID_OTN_ONOFF", 902, 1},
                                         Item{"ID_HOTEL_OTN_UPDATE", 10130, 1}, Item{"ID_OTN_TESTSERVER", 904, 0},
                                         Item{"ID_DAX_FAIL_TEST", 923, 0}, Item{"ID_DAX_DURATION", 922, 0},
                                         Item{"ID_FAST_USB_BOOTING_ONOFF", 869, 0}),
                         rowName);

TEST(UnknownFactoryItemTest, FailsAnAssertionAlthoughThePlatformKnowsIt) {
    FakeKovan::setSystemInfo(890, 1);
    EXPECT_ASSERTION_WITHOUT_MSG(getIntFromFactory(SYSTEM_INFO_KEY_OTA_SUPPORT), "it != defaultValuesMap.end()");
}

} // namespace
} // namespace DAX::Tests
