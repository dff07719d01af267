#include "Platform/SystemAPI/PowerModeSystemAPI/Implementation/PowerModeChangeSignalSubscriber.h"

#include "PowerFixture.h"
#include "support/ProcessDeath.h"

namespace DAX::Tests {
namespace {

using FakeKovan::PowerSignal;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

class PowerModeChangeSignalSubscriberTest : public PowerFixture {
protected:
    static int announce(int state) { return FakeKovan::announcePower(PowerSignal::STATE_CHANGED, state); }

    std::unique_ptr<Subscriber> subscriber = factory.createPowerModeChangeSignalSubscriber();
};

TEST_F(PowerModeChangeSignalSubscriberTest, IsWhatTheFactoryMakes) {
    EXPECT_NE(dynamic_cast<Platform::PowerModeChangeSignalSubscriber*>(subscriber.get()), nullptr);
}

TEST_F(PowerModeChangeSignalSubscriberTest, SubscribesAtTheDevice) {
    subscriber->subscribe(collect());
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log INF Subscribing for Power Mode changed signal.", "power subscribe state_changed"));
}

TEST_F(PowerModeChangeSignalSubscriberTest, GivesEachStateAsItsMode) {
    subscriber->subscribe(collect());
    for (int state = 0; state <= 4; ++state) {
        EXPECT_EQ(announce(state), 0);
    }
    EXPECT_THAT(modes, ElementsAre(0, 1, 2, 3, 4));
}

TEST_F(PowerModeChangeSignalSubscriberTest, GivesAnUnknownStateAsTheModeZero) {
    subscriber->subscribe(collect());
    announce(7);
    announce(7);
    announce(-1);
    announce(5);
    announce(4);
    EXPECT_THAT(modes, ElementsAre(0, 0, 0, 0, 4));
}

TEST_F(PowerModeChangeSignalSubscriberTest, SaysThatTheSignalCameBeforeTheCallback) {
    subscriber->subscribe([](DAXCommon::PowerMode mode) { FakeKovan::note("called " + std::to_string(mode)); });
    FakeKovan::forgetRecords();
    announce(2);
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log INF Power Mode Changed signal received.", "called 2"));
}

TEST_F(PowerModeChangeSignalSubscriberTest, UnsubscribesWhenItIsAsked) {
    subscriber->subscribe(collect());
    FakeKovan::forgetRecords();
    subscriber->unsubscribe();
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log INF Unsubscribing from Power Mode Change signal.", "power unsubscribe state_changed"));
    announce(2);
    EXPECT_TRUE(modes.empty());
}

TEST_F(PowerModeChangeSignalSubscriberTest, UnsubscribesWhenItDies) {
    subscriber->subscribe(collect());
    FakeKovan::forgetRecords();
    subscriber.reset();
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log INF Unsubscribing from Power Mode Change signal.", "power unsubscribe state_changed"));
}

TEST_F(PowerModeChangeSignalSubscriberTest, DiesInSilenceWhenItIsNotSubscribed) {
    subscriber->subscribe(collect());
    subscriber->unsubscribe();
    FakeKovan::forgetRecords();
    subscriber.reset();
    EXPECT_THAT(FakeKovan::journal(), ElementsAre());
}

TEST_F(PowerModeChangeSignalSubscriberTest, DoesNotLookAtTheResultOfTheUnsubscription) {
    subscriber->subscribe(collect());
    FakeKovan::setPowerUnsubscribeResult(PowerSignal::STATE_CHANGED, -1);
    EXPECT_NO_THROW(subscriber->unsubscribe());
    EXPECT_EQ(thrownDescription([&] { subscriber->unsubscribe(); }), "Not subscribed.");
}

TEST_F(PowerModeChangeSignalSubscriberTest, IsNotReachedByACallAfterItsEnd) {
    subscriber->subscribe(collect());
    FakeKovan::setPowerUnsubscribeResult(PowerSignal::STATE_CHANGED, -1); // the device goes on calling
    subscriber.reset();
    FakeKovan::forgetRecords();
    EXPECT_EQ(announce(2), 0);
    EXPECT_TRUE(modes.empty());
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre(StartsWith("log WRN The callback is not registered or removed. ID:  0x"),
                            StartsWith("log WRN The callback can not be called. ID:  0x")));
}

TEST_F(PowerModeChangeSignalSubscriberTest, MayBeSubscribedAgain) {
    subscriber->subscribe([](DAXCommon::PowerMode) { ADD_FAILURE(); });
    subscriber->unsubscribe();
    subscriber->subscribe(collect());
    announce(3);
    EXPECT_THAT(modes, ElementsAre(3));
}

TEST_F(PowerModeChangeSignalSubscriberTest, KeepsTheFirstCallbackWhenItIsSubscribedTwice) {
    subscriber->subscribe(collect());
    EXPECT_EQ(thrownDescription([&] { subscriber->subscribe([](DAXCommon::PowerMode) { ADD_FAILURE(); }); }),
              "Already subscribed.");
    announce(1);
    EXPECT_THAT(modes, ElementsAre(1));
}

TEST_F(PowerModeChangeSignalSubscriberTest, LeavesTheOneThatIsSubscribedAloneWhenTheDeviceRefusesASecond) {
    subscriber->subscribe(collect());
    const auto second = factory.createPowerModeChangeSignalSubscriber();
    EXPECT_EQ(thrownText<Common::Utils::errinfo_stream_text>([&] { second->subscribe(collect()); }),
              "Already subscribed for Power Mode Change signal. Error code: -17");
    announce(1);
    EXPECT_THAT(modes, ElementsAre(1));
}

TEST_F(PowerModeChangeSignalSubscriberTest, TakesItsRegistrationBackAfterARefusal) {
    FakeKovan::setPowerSubscribeResult(PowerSignal::STATE_CHANGED, -16);
    EXPECT_ANY_THROW(subscriber->subscribe(collect()));
    FakeKovan::forgetRecords();
    subscriber.reset(); // a registration that stays would end the process when the fixture's guard is dropped
    EXPECT_THAT(FakeKovan::messages("INF"),
                ElementsAre("Probably an exception was thrown while subscribing the callback in exernal API. The "
                            "callback is not subscribed, but it was registered in UserDataRegister. We need to "
                            "unregister it."));
}

TEST_F(PowerModeChangeSignalSubscriberTest, SubscribesAfterARefusal) {
    FakeKovan::setPowerSubscribeResult(PowerSignal::STATE_CHANGED, -16);
    EXPECT_ANY_THROW(subscriber->subscribe(collect()));
    FakeKovan::setPowerSubscribeResult(PowerSignal::STATE_CHANGED, 0);
    subscriber->subscribe(collect());
    announce(4);
    EXPECT_THAT(modes, ElementsAre(4));
}

TEST_F(PowerModeChangeSignalSubscriberTest, MayUnsubscribeItselfFromItsCallback) {
    subscriber->subscribe([this](DAXCommon::PowerMode mode) {
        subscriber->unsubscribe();
        modes.push_back(mode);
    });
    announce(1);
    announce(2);
    EXPECT_THAT(modes, ElementsAre(1));
}

TEST_F(PowerModeChangeSignalSubscriberTest, EndsTheProcessWithoutACallback) {
    subscriber->subscribe(nullptr);
    EXPECT_ASSERTION_MSG(announce(1), "false", "Callbacks must not throw!");
    EXPECT_EXIT(
        {
            FakeKovan::echoLogToStderr(true);
            announce(1);
        },
        testing::KilledBySignal(SIGABRT),
        AllOf(HasSubstr("Exception caught during GenericFunctorCallback:"), HasSubstr("bad_function_call")));
}

TEST_F(PowerModeChangeSignalSubscriberTest, EndsTheProcessWhenAnotherThreadThanTheMainLoopsCalls) {
    subscriber->subscribe(collect());
    EXPECT_EXIT(
        {
            FakeKovan::echoLogToStderr(true);
            boost::thread([] { announce(1); }).join();
        },
        testing::KilledBySignal(SIGABRT),
        AllOf(HasSubstr("\nMESSAGE: This data is accessed from thread Id: "), HasSubstr(", while expected Id is: ")));
}

TEST_F(PowerModeChangeSignalSubscriberTest, TakesACallOfAnyThreadInProduction) {
    FakeKovan::setProduction(true);
    subscriber->subscribe(collect());
    boost::thread([] { announce(1); }).join();
    EXPECT_THAT(modes, ElementsAre(1));
}

} // namespace
} // namespace DAX::Tests
