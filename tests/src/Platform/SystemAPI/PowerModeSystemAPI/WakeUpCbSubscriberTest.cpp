#include "Platform/SystemAPI/PowerModeSystemAPI/Implementation/WakeUpCbSubscriber.h"

#include "PowerFixture.h"
#include "support/ProcessDeath.h"

namespace DAX::Tests {
namespace {

using FakeKovan::PowerSignal;
using testing::ElementsAre;

class WakeUpCbSubscriberTest : public PowerFixture {
protected:
    static int announce() { return FakeKovan::announcePower(PowerSignal::POST_WAKEUP, 41); }

    std::unique_ptr<Common::Utils::SignalSubscriber<void()>> subscriber = factory.createPostWakeUpSignalSubscriber();
    int calls = 0;
};

TEST_F(WakeUpCbSubscriberTest, IsWhatTheFactoryMakes) {
    EXPECT_NE(dynamic_cast<Platform::WakeUpCbSubscriber*>(subscriber.get()), nullptr);
}

TEST_F(WakeUpCbSubscriberTest, CallsWithoutAnArgument) {
    subscriber->subscribe([this] { ++calls; });
    EXPECT_EQ(announce(), 0);
    EXPECT_EQ(calls, 1);
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log INF Subscribing for Wake Up signal.", "power subscribe post_wakeup"));
}

TEST_F(WakeUpCbSubscriberTest, UnsubscribesWhenItDies) {
    subscriber->subscribe([this] { ++calls; });
    FakeKovan::forgetRecords();
    subscriber.reset();
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log INF Unsubscribing from Wake Up signal.", "power unsubscribe post_wakeup"));
    announce();
    EXPECT_EQ(calls, 0);
}

TEST_F(WakeUpCbSubscriberTest, EndsTheProcessWithoutACallback) {
    subscriber->subscribe(nullptr);
    EXPECT_ASSERTION_MSG(announce(), "false", "Callbacks must not throw!");
}

TEST_F(WakeUpCbSubscriberTest, IsCalledOnTheMainLoopsThreadAlone) {
    subscriber->subscribe([this] { ++calls; });
    EXPECT_EXIT(
        {
            FakeKovan::echoLogToStderr(true);
            boost::thread([] { announce(); }).join();
        },
        testing::KilledBySignal(SIGABRT), testing::HasSubstr("\nMESSAGE: This data is accessed from thread Id: "));
}

} // namespace
} // namespace DAX::Tests
