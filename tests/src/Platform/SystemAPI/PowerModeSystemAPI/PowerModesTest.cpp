#include "Platform/SystemAPI/PowerModeSystemAPI/Implementation/PowerModes.h"

#include <gtest/gtest.h>

namespace DAX::Tests {
namespace {

using Platform::powerModes;
using Platform::toPowerMode;

class PowerModesTest : public testing::Test {
protected:
    // Restores the table as if no unknown state had been met.
    PowerModesTest() {
        auto& modes = powerModes();
        modes.erase(modes.upper_bound(POWER_STATE_RESTART), modes.end());
        modes.erase(modes.begin(), modes.lower_bound(POWER_STATE_NORMAL));
    }
};

TEST_F(PowerModesTest, KnowTheFiveStates) {
    for (int state = 0; state <= 4; ++state) {
        EXPECT_EQ(toPowerMode(state), state);
    }
    EXPECT_EQ(powerModes().size(), 5u);
}

TEST_F(PowerModesTest, AddAnUnknownStateWithTheModeZero) {
    EXPECT_EQ(toPowerMode(7), 0);
    EXPECT_EQ(powerModes().size(), 6u);
    EXPECT_EQ(toPowerMode(7), 0);
    EXPECT_EQ(powerModes().size(), 6u);
}

} // namespace
} // namespace DAX::Tests
