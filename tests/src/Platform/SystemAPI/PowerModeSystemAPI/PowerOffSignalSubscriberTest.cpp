#include "Platform/SystemAPI/PowerModeSystemAPI/Implementation/PowerOffSignalSubscriber.h"

#include "Platform/SystemAPI/PowerModeSystemAPI/Implementation/PowerOffCbDistributor.h"
#include "Platform/SystemAPI/PowerModeSystemAPI/Implementation/PowerOffCbLowLevelSubscriber.h"
#include "PowerFixture.h"
#include "support/ProcessDeath.h"

namespace DAX::Tests {
namespace {

using Common::Utils::errinfo_stream_text;
using Common::Utils::SingletonServiceGuard;
using FakeKovan::PowerSignal;
using Platform::PowerOffCbDistributor;
using Platform::PowerOffCbLowLevelSubscriber;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class PowerOffSignalSubscriberTest : public PowerFixture {
protected:
    static int announce(int state) { return FakeKovan::announcePower(PowerSignal::POWER_OFF, state); }

    std::function<void(DAXCommon::PowerMode)> noteAs(const std::string& name) {
        return [name](DAXCommon::PowerMode mode) { FakeKovan::note(name + " " + std::to_string(mode)); };
    }
};

TEST_F(PowerOffSignalSubscriberTest, IsWhatTheFactoryMakes) {
    EXPECT_NE(dynamic_cast<Platform::PowerOffSignalSubscriber*>(makePowerOff().get()), nullptr);
}

TEST_F(PowerOffSignalSubscriberTest, NeedsTheDistributorForAsLongAsItLives) {
    auto subscriber = makePowerOff();
    EXPECT_THAT(FakeKovan::messages("INF"), ElementsAre("Needed: singleton id: POWER_OFF_CB_DISTRIBUTOR",
                                                        "Creating : singleton id: POWER_OFF_CB_DISTRIBUTOR"));
    FakeKovan::forgetRecords();
    subscriber.reset();
    EXPECT_THAT(FakeKovan::messages("INF"), ElementsAre("Unmarking needed: singleton id: POWER_OFF_CB_DISTRIBUTOR",
                                                        "Singleton: POWER_OFF_CB_DISTRIBUTOR will be deleted.",
                                                        "Unmarking needed: singleton id: USER_DATA_REGISTER"));
}

TEST_F(PowerOffSignalSubscriberTest, SubscribesAtTheDeviceThroughTheDistributor) {
    const auto subscriber = makePowerOff();
    FakeKovan::forgetRecords();
    subscriber->subscribe(collect());
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log INF Subscribing for Power Off signal.", "power subscribe poweroff"));
}

TEST_F(PowerOffSignalSubscriberTest, GivesTheModeAndSaysThatTheSignalCame) {
    const auto subscriber = makePowerOff();
    subscriber->subscribe(noteAs("called"));
    FakeKovan::forgetRecords();
    EXPECT_EQ(announce(3), 0);
    EXPECT_EQ(announce(7), 0);
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log INF Power Off signal received.", "called 3",
                                                  "log INF Power Off signal received.", "called 0"));
}

TEST_F(PowerOffSignalSubscriberTest, SharesOneSubscriptionOfTheDevice) {
    const auto first = makePowerOff();
    const auto second = makePowerOff();
    first->subscribe(noteAs("first"));
    second->subscribe(noteAs("second"));
    EXPECT_THAT(FakeKovan::journal("power"), ElementsAre("power subscribe poweroff"));
    announce(1);
    EXPECT_THAT(FakeKovan::journal("first"), ElementsAre("first 1"));
    EXPECT_THAT(FakeKovan::journal("second"), ElementsAre("second 1"));
}

TEST_F(PowerOffSignalSubscriberTest, LeavesTheOthersServedWhenOneUnsubscribes) {
    const auto first = makePowerOff();
    const auto second = makePowerOff();
    first->subscribe(noteAs("first"));
    second->subscribe(noteAs("second"));
    first->unsubscribe();
    announce(1);
    EXPECT_THAT(FakeKovan::journal("first"), IsEmpty());
    EXPECT_THAT(FakeKovan::journal("second"), ElementsAre("second 1"));
}

TEST_F(PowerOffSignalSubscriberTest, KeepsTheDevicesSubscriptionUntilTheLastOneDies) {
    auto first = makePowerOff();
    auto second = makePowerOff();
    first->subscribe(collect());
    second->subscribe(collect());
    first->unsubscribe();
    second->unsubscribe();
    first.reset();
    EXPECT_TRUE(FakeKovan::isPowerSubscribed(PowerSignal::POWER_OFF));
    second.reset();
    EXPECT_FALSE(FakeKovan::isPowerSubscribed(PowerSignal::POWER_OFF));
}

TEST_F(PowerOffSignalSubscriberTest, UnsubscribesAndThenReleasesTheDistributorWhenItDies) {
    auto subscriber = makePowerOff();
    subscriber->subscribe(collect());
    FakeKovan::forgetRecords();
    subscriber.reset();
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log INF Unmarking needed: singleton id: POWER_OFF_CB_DISTRIBUTOR",
                            "log INF Singleton: POWER_OFF_CB_DISTRIBUTOR will be deleted.",
                            "log INF Unsubscribing from Power Off signal.", "power unsubscribe poweroff",
                            "log INF Unmarking needed: singleton id: USER_DATA_REGISTER"));
}

TEST_F(PowerOffSignalSubscriberTest, MayUnsubscribeItselfFromItsCallback) {
    const auto first = makePowerOff();
    const auto second = makePowerOff();
    first->subscribe([&](DAXCommon::PowerMode) { first->unsubscribe(); });
    second->subscribe(noteAs("second"));
    announce(1);
    announce(2);
    EXPECT_THAT(FakeKovan::journal("second"), ElementsAre("second 1", "second 2"));
    EXPECT_EQ(thrownDescription([&] { first->unsubscribe(); }), "Not subscribed.");
}

TEST_F(PowerOffSignalSubscriberTest, MayUnsubscribeAnotherFromItsCallback) {
    const auto first = makePowerOff();
    const auto second = makePowerOff();
    second->subscribe(noteAs("second"));
    first->subscribe([&](DAXCommon::PowerMode mode) {
        if (mode == 1) {
            second->unsubscribe();
        }
    });
    announce(1);
    announce(2);
    EXPECT_THAT(FakeKovan::journal("second"), ElementsAre("second 1")); // it was called before the other
}

TEST_F(PowerOffSignalSubscriberTest, MaySubscribeAnotherFromItsCallback) {
    const auto first = makePowerOff();
    const auto second = makePowerOff();
    first->subscribe([&](DAXCommon::PowerMode mode) {
        if (mode == 1) {
            second->subscribe(noteAs("second"));
        }
    });
    announce(1);
    announce(2);
    EXPECT_THAT(FakeKovan::journal("second"), ElementsAre("second 2"));
}

TEST_F(PowerOffSignalSubscriberTest, IsCalledInTheOrderOfRegistration) {
    const auto first = makePowerOff();
    const auto second = makePowerOff();
    second->subscribe(noteAs("call second"));
    first->subscribe(noteAs("call first"));
    announce(1);
    EXPECT_THAT(FakeKovan::journal("call"), ElementsAre("call second 1", "call first 1"));
}

TEST_F(PowerOffSignalSubscriberTest, IsRefusedByTheDeviceThroughTheDistributor) {
    FakeKovan::setPowerSubscribeResult(PowerSignal::POWER_OFF, -16);
    const auto subscriber = makePowerOff();
    EXPECT_EQ(thrownText<errinfo_stream_text>([&] { subscriber->subscribe(collect()); }),
              "Cannot subscribe for Power Off signal. Error code: -16");
    EXPECT_EQ(thrownDescription([&] { subscriber->unsubscribe(); }), "Not subscribed.");
}

TEST_F(PowerOffSignalSubscriberTest, SubscribesAfterARefusal) {
    FakeKovan::setPowerSubscribeResult(PowerSignal::POWER_OFF, -16);
    const auto subscriber = makePowerOff();
    EXPECT_ANY_THROW(subscriber->subscribe(collect()));
    FakeKovan::setPowerSubscribeResult(PowerSignal::POWER_OFF, 0);
    subscriber->subscribe(collect());
    announce(2);
    EXPECT_THAT(modes, ElementsAre(2));
}

TEST_F(PowerOffSignalSubscriberTest, SaysAtTheDistributorsEndThatTheDeviceWasNeverSubscribed) {
    FakeKovan::setPowerSubscribeResult(PowerSignal::POWER_OFF, -16);
    auto subscriber = makePowerOff();
    EXPECT_ANY_THROW(subscriber->subscribe(collect()));
    FakeKovan::forgetRecords();
    subscriber.reset();
    EXPECT_THAT(
        FakeKovan::messages("ERR"),
        ElementsAre(testing::AllOf(testing::StartsWith("Exception was caught in PowerOffCbLowLevelSubscriber: "),
                                   HasSubstr("Not subscribed."))));
}

TEST_F(PowerOffSignalSubscriberTest, EndsTheProcessWithoutACallback) {
    const auto subscriber = makePowerOff();
    subscriber->subscribe(nullptr);
    EXPECT_ASSERTION_MSG(announce(1), "false", "Callbacks must not throw!");
}

TEST_F(PowerOffSignalSubscriberTest, IsCalledOnTheMainLoopsThreadAlone) {
    const auto subscriber = makePowerOff();
    subscriber->subscribe(collect());
    EXPECT_EXIT(
        {
            FakeKovan::echoLogToStderr(true);
            boost::thread([] { announce(1); }).join();
        },
        testing::KilledBySignal(SIGABRT), HasSubstr("\nMESSAGE: This data is accessed from thread Id: "));
}

TEST_F(PowerOffSignalSubscriberTest, HasOneLowLevelSubscriberAtATime) {
    {
        const PowerOffCbLowLevelSubscriber first;
        EXPECT_EQ(thrownText<errinfo_stream_text>([] { PowerOffCbLowLevelSubscriber(); }),
                  "Object of this type is already created. It should never happen!");
    }
    EXPECT_NO_THROW(PowerOffCbLowLevelSubscriber());
}

TEST_F(PowerOffSignalSubscriberTest, HasADistributorThatStandsOnTheRegister) {
    EXPECT_EQ(PowerOffCbDistributor::getID(), Common::Utils::POWER_OFF_CB_DISTRIBUTOR);
    EXPECT_THAT(PowerOffCbDistributor::getRequirements(), ElementsAre(Common::Utils::USER_DATA_REGISTER));
}

TEST_F(PowerOffSignalSubscriberTest, LetsADistributorGoThatNobodySubscribed) {
    { const SingletonServiceGuard<PowerOffCbDistributor> guard; }
    EXPECT_THAT(FakeKovan::messages("ERR"), IsEmpty());
}

} // namespace
} // namespace DAX::Tests
