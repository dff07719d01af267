#include <cstdlib>
#include <ctime>

#include <bootclock.h>
#include <gtest/gtest.h>

namespace {

constexpr uint64_t HOUR = 3600;
constexpr uint64_t NOON_IN_JANUARY = 1736942400; // 2025-01-15 12:00:00
constexpr uint64_t NOON_IN_JULY = 1752580800;    // 2025-07-15 12:00:00

class BootclockTest : public testing::Test {
protected:
    ~BootclockTest() override { inZone(nullptr); }

    static void inZone(const char* zone) { zone == nullptr ? unsetenv("TZ") : setenv("TZ", zone, 1); }

    static void expectCurrentTimeAheadOfUtcBy(uint64_t seconds) {
        const auto before = static_cast<uint64_t>(std::time(nullptr));
        const uint64_t local = BC_GetCurrentTime();
        const auto after = static_cast<uint64_t>(std::time(nullptr));

        EXPECT_LE(before + seconds, local);
        EXPECT_GE(after + seconds, local);
    }
};

} // namespace

TEST_F(BootclockTest, InitAndFiniSucceed) {
    EXPECT_EQ(bootclock_init(), 0);
    EXPECT_EQ(bootclock_fini(), 0);
}

TEST_F(BootclockTest, CurrentTimeIsUtcPlusTheZonesOffset) {
    inZone("EAST-5:30");

    expectCurrentTimeAheadOfUtcBy(5 * HOUR + HOUR / 2);
}

TEST_F(BootclockTest, ZoneThatChangesWhileTheProcessRunsIsFollowed) {
    inZone("EAST-5:30");
    BC_GetCurrentTime();
    inZone("FARTHER-9");

    expectCurrentTimeAheadOfUtcBy(9 * HOUR);
}

TEST_F(BootclockTest, CurrentTimeLeadsBackToUtc) {
    inZone("WEST+8");

    const auto before = static_cast<uint64_t>(std::time(nullptr));
    const uint64_t utc = BC_ConvertToUTCTime(BC_GetCurrentTime());
    const auto after = static_cast<uint64_t>(std::time(nullptr));

    EXPECT_LE(before, utc);
    EXPECT_GE(after, utc);
}

TEST_F(BootclockTest, LocalTimeWestOfUtcBecomesLater) {
    inZone("WEST+8");

    EXPECT_EQ(BC_ConvertToUTCTime(NOON_IN_JANUARY), NOON_IN_JANUARY + 8 * HOUR);
}

TEST_F(BootclockTest, SummerTimeHasAnOffsetOfItsOwn) {
    inZone("CET-1CEST,M3.5.0,M10.5.0/3");

    EXPECT_EQ(BC_ConvertToUTCTime(NOON_IN_JANUARY), NOON_IN_JANUARY - HOUR);
    EXPECT_EQ(BC_ConvertToUTCTime(NOON_IN_JULY), NOON_IN_JULY - 2 * HOUR);
}

TEST_F(BootclockTest, UtcStaysAsItIs) {
    inZone("UTC0");

    EXPECT_EQ(BC_ConvertToUTCTime(NOON_IN_JULY), NOON_IN_JULY);
}
