#include "host/PowerRecords.h"

#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/Corruption.h"

using KovanHost::parsePower;
using KovanHost::Power;
using KovanHost::PowerRecord;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

const std::string GOOD = "[announcements]\n"
                         "1795250000123456=state_changed 1\n"
                         "1795250000123457=poweroff -3\n"
                         "\n"
                         "[requests]\n"
                         "1795250007654321=reboot 536870924\n"
                         "\n"
                         "[power]\n"
                         "state=1\n"
                         "wakeup_reason=41\n";

std::string reasonAgainst(const std::string& text) {
    try {
        parsePower(text);
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "<none>";
}

std::vector<int> numbersOf(const std::vector<PowerRecord>& records) {
    std::vector<int> numbers;
    for (const PowerRecord& record : records) {
        numbers.push_back(record.number);
    }
    return numbers;
}

struct BadText {
    std::string text;
    std::string reason;
};

class PowerRecordsBadTextTest : public testing::TestWithParam<BadText> {};

} // namespace

TEST(PowerRecordsTest, NothingIsStateAndReasonZeroWithoutRecords) {
    EXPECT_EQ(textOf(Power()), "[announcements]\n\n[requests]\n\n[power]\nstate=0\nwakeup_reason=0\n");
}

TEST(PowerRecordsTest, ReadsEverything) {
    const Power power = parsePower(GOOD);

    EXPECT_EQ(power.state, 1);
    EXPECT_EQ(power.wakeUpReason, 41);
    ASSERT_EQ(power.announcements.size(), 2u);
    EXPECT_EQ(power.announcements[1].sequence, 1795250000123457);
    EXPECT_EQ(power.announcements[1].name, "poweroff");
    EXPECT_EQ(power.announcements[1].number, -3);
    ASSERT_EQ(power.requests.size(), 1u);
    EXPECT_EQ(power.requests[0].name, "reboot");
    EXPECT_EQ(power.requests[0].number, 536870924);
}

TEST(PowerRecordsTest, WritesWhatItRead) {
    EXPECT_EQ(textOf(parsePower(GOOD)), GOOD);
}

TEST(PowerRecordsTest, GroupsOfRecordsMayBeAbsentAndTheOthersInAnyOrder) {
    const Power power = parsePower("[power]\nwakeup_reason=5\nstate=7\n[requests]\n1=poweroff 2\n");

    EXPECT_EQ(power.state, 7);
    EXPECT_EQ(power.wakeUpReason, 5);
    EXPECT_TRUE(power.announcements.empty());
    EXPECT_THAT(numbersOf(power.requests), ElementsAre(2));
}

TEST(PowerRecordsTest, PutsRecordsInOrder) {
    const Power power = parsePower("[announcements]\n12=poweroff 2\n9=poweroff 1\n[power]\nstate=0\nwakeup_reason=0\n");

    EXPECT_THAT(numbersOf(power.announcements), ElementsAre(1, 2));
    EXPECT_EQ(lastSequence(power.announcements), 12);
}

TEST(PowerRecordsTest, RefusesEveryTextThatIsCutOff) {
    for (const std::string& cut : DAX::Tests::cutsOf(GOOD)) {
        EXPECT_NE(reasonAgainst(cut), "<none>") << cut;
    }
}

TEST(PowerRecordsTest, RefusesAbsentKeysByName) {
    EXPECT_THAT(reasonAgainst("[power]\nwakeup_reason=0\n"), HasSubstr("state"));
    EXPECT_THAT(reasonAgainst("[power]\nstate=0\n"), HasSubstr("wakeup_reason"));
    EXPECT_THAT(reasonAgainst("[requests]\n"), HasSubstr("power"));
}

TEST(PowerRecordsTest, RefusesWhatIsNoKeyFileOrNoNumber) {
    EXPECT_THAT(reasonAgainst("no key file\n"), HasSubstr("which is not a key-value pair, group, or comment"));
    EXPECT_THAT(reasonAgainst("[power]\nstate=one\nwakeup_reason=0\n"), HasSubstr("state"));
    EXPECT_THAT(reasonAgainst("[power]\nstate=9999999999\nwakeup_reason=0\n"), HasSubstr("state"));
    EXPECT_THAT(reasonAgainst(std::string("[power]\nstate=1\0\n", 17)), testing::Ne("<none>"));
    EXPECT_THAT(reasonAgainst("[power]\nstate=0\nwakeup_reason=0\n[requests]\n1=\xff 1\n"), HasSubstr("UTF-8"));
}

TEST_P(PowerRecordsBadTextTest, IsRefusedWithItsReason) {
    EXPECT_EQ(GetParam().reason, reasonAgainst(GetParam().text));
}

INSTANTIATE_TEST_SUITE_P(
    BadTexts, PowerRecordsBadTextTest,
    testing::Values(
        BadText{"", "the file is empty"}, BadText{"[power]\nstate=0\nwakeup_reason=0", "the last line has no end"},
        BadText{"[power]\nstate=-1\nwakeup_reason=0\n", "the state is negative"},
        BadText{"[power]\nstate=0\nwakeup_reason=-1\n", "the wakeup_reason is negative"},
        BadText{"[announcements]\n1=poweroff\n[power]\nstate=0\nwakeup_reason=0\n", "'1=poweroff' is no record"},
        BadText{"[announcements]\n1=poweroff x\n[power]\nstate=0\nwakeup_reason=0\n", "'1=poweroff x' is no record"},
        BadText{"[announcements]\n1=poweroff 99999999999\n[power]\nstate=0\nwakeup_reason=0\n",
                "'1=poweroff 99999999999' is no record"},
        BadText{"[requests]\nfirst=reboot 1\n[power]\nstate=0\nwakeup_reason=0\n", "'first=reboot 1' is no record"}));

TEST(PowerRecordsTest, EachRecordComesAfterTheOneBefore) {
    std::vector<PowerRecord> records;
    for (int number = 0; number < 50; ++number) {
        const std::int64_t before = lastSequence(records);
        addRecord(records, "poweroff", number);
        EXPECT_LT(before, lastSequence(records));
    }
}

TEST(PowerRecordsTest, RecordComesAfterOneFromALaterTime) {
    std::vector<PowerRecord> records = {{4000000000000000000, "poweroff", 1}};
    addRecord(records, "poweroff", 2);

    EXPECT_EQ(lastSequence(records), 4000000000000000001);
}

TEST(PowerRecordsTest, ForgetsTheOldestOfTooMany) {
    std::vector<PowerRecord> records;
    for (int number = 0; number < 103; ++number) {
        addRecord(records, "poweroff", number);
    }

    EXPECT_EQ(records.size(), 100u);
    EXPECT_EQ(records.front().number, 3);
    EXPECT_EQ(records.back().number, 102);
}
