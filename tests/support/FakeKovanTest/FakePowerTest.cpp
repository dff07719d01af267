#include <device_power.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/FakeKovan.h"

using FakeKovan::PowerSignal;
using testing::ElementsAre;
using testing::Pair;

namespace {

struct SignalCase {
    PowerSignal signal;
    const char* name;
    int (*subscribe)(device_power_callback callback, void* userData);
    int (*unsubscribe)(device_power_callback callback);
};

const SignalCase SIGNALS[] = {
    {PowerSignal::STATE_CHANGED, "state_changed", device_power_subscribe_state_changed,
     device_power_unsubscribe_state_changed},
    {PowerSignal::POWER_OFF, "poweroff", device_power_subscribe_poweroff, device_power_unsubscribe_poweroff},
    {PowerSignal::POST_WAKEUP, "post_wakeup", device_power_subscribe_post_wakeup,
     device_power_unsubscribe_post_wakeup}};

using Calls = std::vector<std::pair<std::string, int>>;

int first(int number, void* calls) {
    static_cast<Calls*>(calls)->emplace_back("first", number);
    return 11;
}

int second(int number, void* calls) {
    static_cast<Calls*>(calls)->emplace_back("second", number);
    return 22;
}

class FakePowerSignalTest : public testing::TestWithParam<SignalCase> {
protected:
    int subscribe(device_power_callback callback) { return GetParam().subscribe(callback, &m_calls); }
    static int unsubscribe(device_power_callback callback) { return GetParam().unsubscribe(callback); }
    static int announce(int number) { return FakeKovan::announcePower(GetParam().signal, number); }
    static bool isSubscribed() { return FakeKovan::isPowerSubscribed(GetParam().signal); }

    Calls m_calls;
};

INSTANTIATE_TEST_SUITE_P(Signals, FakePowerSignalTest, testing::ValuesIn(SIGNALS),
                         [](const auto& instance) { return std::string(instance.param.name); });

TEST_P(FakePowerSignalTest, CallsTheSubscribedInTheirOrderAndReturnsTheLastResult) {
    EXPECT_EQ(subscribe(second), 0);
    EXPECT_EQ(subscribe(first), 0);

    EXPECT_EQ(announce(7), 11);
    EXPECT_THAT(m_calls, ElementsAre(Pair("second", 7), Pair("first", 7)));
}

TEST_P(FakePowerSignalTest, AnnouncesToNobodyOfAnotherSignal) {
    subscribe(first);

    for (const SignalCase& other : SIGNALS) {
        const bool own = other.signal == GetParam().signal;
        EXPECT_EQ(FakeKovan::isPowerSubscribed(other.signal), own);
        EXPECT_EQ(FakeKovan::announcePower(other.signal, 1), own ? 11 : 0);
    }
    EXPECT_THAT(m_calls, ElementsAre(Pair("first", 1)));
}

TEST_P(FakePowerSignalTest, RefusesASecondSubscriptionOfOneCallback) {
    Calls others;
    subscribe(first);

    EXPECT_EQ(GetParam().subscribe(first, &others), -17);
    announce(7);
    EXPECT_THAT(m_calls, ElementsAre(Pair("first", 7)));
    EXPECT_THAT(others, ElementsAre());
}

TEST_P(FakePowerSignalTest, DoesNotCallTheUnsubscribed) {
    subscribe(first);

    EXPECT_EQ(unsubscribe(first), 0);
    EXPECT_FALSE(isSubscribed());
    EXPECT_EQ(announce(7), 0);
    EXPECT_THAT(m_calls, ElementsAre());
    EXPECT_EQ(unsubscribe(first), FakeKovan::NOT_SUBSCRIBED);
}

TEST_P(FakePowerSignalTest, SubscribesNothingWithAResult) {
    FakeKovan::setPowerSubscribeResult(GetParam().signal, -16);

    EXPECT_EQ(subscribe(first), -16);
    EXPECT_FALSE(isSubscribed());
}

TEST_P(FakePowerSignalTest, KeepsTheSubscriptionWithAResultOfUnsubscribing) {
    subscribe(first);
    FakeKovan::setPowerUnsubscribeResult(GetParam().signal, -16);

    EXPECT_EQ(unsubscribe(first), -16);
    EXPECT_TRUE(isSubscribed());
}

TEST_P(FakePowerSignalTest, WritesEachCallIntoTheJournal) {
    subscribe(first);
    subscribe(first);
    announce(7);
    unsubscribe(first);

    const std::string name = GetParam().name;
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("power subscribe " + name, "power subscribe " + name, "power unsubscribe " + name));
}

TEST_P(FakePowerSignalTest, ForgetsSubscriptionsAndResultsWhenItIsReset) {
    subscribe(first);
    FakeKovan::setPowerSubscribeResult(GetParam().signal, -16);
    FakeKovan::setPowerUnsubscribeResult(GetParam().signal, -16);
    FakeKovan::reset();

    EXPECT_FALSE(isSubscribed());
    EXPECT_EQ(subscribe(first), 0);
    EXPECT_EQ(unsubscribe(first), 0);
}

// Unsubscribes the callback after it, and itself.
int endsAll(int, void* signal) {
    static_cast<const SignalCase*>(signal)->unsubscribe(second);
    return static_cast<const SignalCase*>(signal)->unsubscribe(endsAll);
}

TEST_P(FakePowerSignalTest, LetsACallbackUnsubscribeItselfAndTheNext) {
    SignalCase signal = GetParam();
    EXPECT_EQ(signal.subscribe(endsAll, &signal), 0);
    subscribe(second);

    EXPECT_EQ(announce(7), 0);
    EXPECT_THAT(m_calls, ElementsAre());
    EXPECT_FALSE(isSubscribed());
}

TEST(FakePowerTest, StoresTheStateThatIsAskedFor) {
    FakeKovan::setPowerState(4);
    EXPECT_EQ(device_power_get_state(), 4);

    EXPECT_EQ(device_power_set_state(2, 1), 0);
    EXPECT_EQ(device_power_get_state(), 2);

    FakeKovan::setPowerSetStateResult(-9);
    EXPECT_EQ(device_power_set_state(1, 0), -9);
    EXPECT_EQ(device_power_get_state(), 2);
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("power set_state 2 1", "power set_state 1 0"));
}

TEST(FakePowerTest, StoresTheWakeUpReason) {
    FakeKovan::setWakeUpReason(-5);
    EXPECT_EQ(device_power_get_wakeup_reason(), -5);

    EXPECT_EQ(device_power_set_wakeup_reason(41), 0);
    EXPECT_EQ(device_power_get_wakeup_reason(), 41);

    FakeKovan::setWakeUpReasonResult(-9);
    EXPECT_EQ(device_power_set_wakeup_reason(5), -9);
    EXPECT_EQ(device_power_get_wakeup_reason(), 41);
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("power set_wakeup_reason 41", "power set_wakeup_reason 5"));
}

TEST(FakePowerTest, RecordsWhatIsRequested) {
    EXPECT_EQ(device_power_request_reboot(0x2000000c), 0);
    EXPECT_EQ(device_power_request_poweroff(12), 0);

    FakeKovan::setRebootResult(3);
    FakeKovan::setPoweroffResult(4);
    EXPECT_EQ(device_power_request_reboot(1), 3);
    EXPECT_EQ(device_power_request_poweroff(2), 4);
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("power request_reboot 536870924", "power request_poweroff 12",
                                                  "power request_reboot 1", "power request_poweroff 2"));
}

TEST(FakePowerTest, IsAwakeAndNothingFailsWhenItIsReset) {
    FakeKovan::setPowerState(4);
    FakeKovan::setWakeUpReason(4);
    FakeKovan::setPowerSetStateResult(-1);
    FakeKovan::setWakeUpReasonResult(-1);
    FakeKovan::setRebootResult(1);
    FakeKovan::setPoweroffResult(1);
    FakeKovan::reset();

    EXPECT_EQ(device_power_get_state(), 0);
    EXPECT_EQ(device_power_get_wakeup_reason(), 0);
    EXPECT_EQ(device_power_set_state(1, 0), 0);
    EXPECT_EQ(device_power_set_wakeup_reason(1), 0);
    EXPECT_EQ(device_power_request_reboot(1), 0);
    EXPECT_EQ(device_power_request_poweroff(1), 0);
}

} // namespace
