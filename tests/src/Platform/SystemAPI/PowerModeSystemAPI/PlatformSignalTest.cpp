#include "Platform/SystemAPI/PowerModeSystemAPI/Implementation/PlatformSignal.h"

#include "PowerFixture.h"
#include "Utility/Utils/ErrorTags.h"

namespace DAX::Tests {
namespace {

using Common::Utils::errinfo_stream_text;
using FakeKovan::PowerSignal;
using testing::ElementsAre;

struct Case {
    std::string id;
    const Platform::PlatformSignal* signal;
    PowerSignal fake;
    std::string function; // its name in the fake
    std::string announcement;
    std::string name;
};

class PlatformSignalTest : public PowerFixture, public testing::WithParamInterface<Case> {
protected:
    // The text of the exception at a refusal.
    std::string refuse(int result) {
        FakeKovan::setPowerSubscribeResult(GetParam().fake, result);
        return thrownText<errinfo_stream_text>([] { Platform::subscribeTo(*GetParam().signal, nullptr); });
    }

    std::string announced() { return "log INF Subscribing for " + GetParam().announcement + " signal."; }
};

TEST_P(PlatformSignalTest, SaysThatItSubscribesAndDoes) {
    Platform::subscribeTo(*GetParam().signal, nullptr);
    EXPECT_THAT(FakeKovan::journal(), ElementsAre(announced(), "power subscribe " + GetParam().function));
    EXPECT_TRUE(FakeKovan::isPowerSubscribed(GetParam().fake));
}

TEST_P(PlatformSignalTest, SaysThatItUnsubscribesAndGivesTheResult) {
    FakeKovan::setPowerUnsubscribeResult(GetParam().fake, -5);
    EXPECT_EQ(Platform::unsubscribeFrom(*GetParam().signal), -5);
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log INF Unsubscribing from " + GetParam().name + " signal.",
                                                  "power unsubscribe " + GetParam().function));
}

TEST_P(PlatformSignalTest, SaysThatItIsSubscribedAlready) {
    EXPECT_EQ(refuse(-17), "Already subscribed for " + GetParam().name + " signal. Error code: -17");
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre(announced(), "power subscribe " + GetParam().function,
                            "log ERR Already subscribed for " + GetParam().name + " signal. Error code: -17."));
}

TEST_P(PlatformSignalTest, SaysThatItCannotSubscribe) {
    EXPECT_EQ(refuse(-16), "Cannot subscribe for " + GetParam().name + " signal. Error code: -16");
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre(announced(), "power subscribe " + GetParam().function,
                            "log ERR Cannot subscribe for " + GetParam().name + " signal. Error code: -16."));
}

TEST_P(PlatformSignalTest, TakesEveryOtherNumberForARefusal) {
    EXPECT_EQ(refuse(1), "Cannot subscribe for " + GetParam().name + " signal. Error code: 1");
}

INSTANTIATE_TEST_SUITE_P(Signals, PlatformSignalTest,
                         testing::Values(Case{"PowerModeChange", &Platform::POWER_MODE_CHANGE_SIGNAL,
                                              PowerSignal::STATE_CHANGED, "state_changed", "Power Mode changed",
                                              "Power Mode Change"},
                                         Case{"PowerOff", &Platform::POWER_OFF_SIGNAL, PowerSignal::POWER_OFF,
                                              "poweroff", "Power Off", "Power Off"},
                                         Case{"WakeUp", &Platform::WAKE_UP_SIGNAL, PowerSignal::POST_WAKEUP,
                                              "post_wakeup", "Wake Up", "Wake Up"}),
                         [](const testing::TestParamInfo<Case>& parameter) { return parameter.param.id; });

} // namespace
} // namespace DAX::Tests
