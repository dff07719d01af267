#include "Platform/SystemAPI/PowerModeSystemAPI/Implementation/PowerSubscriber.h"

#include "PowerFixture.h"
#include "support/OtherThread.h"
#include "support/ProcessDeath.h"
#include "support/Slots.h"

namespace DAX::Tests {
namespace {

using Common::Utils::SingletonsID;
using Common::Utils::SingletonsRegister;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

class FailingSubscriber : public Platform::PowerSubscriber<void()> {
public:
    ~FailingSubscriber() override { unsubscribeAtEnd("FailingSubscriber"); }

    using PowerSubscriber::getExpectedExecutorThreadID;

private:
    void doSubscribe() override {}
    int doUnsubscribe() override { DAX_THROW(Common::Utils::GenericException(), "the device is gone"); }
};

class PowerSubscriberTest : public PowerFixture {
protected:
    // Withdraws every need of the singleton when the thread is asked for the `time`th time, while the singleton is in
    // use.
    void dropWhenAsked(SingletonsID id, int time) {
        loop->whenAsked = [id, time, asked = 0]() mutable {
            while (asked + 1 >= time) {
                SingletonsRegister::getSingletonsRegister().unmarkNeeded(id);
            }
            ++asked;
        };
    }

    static std::string registerIsUsedBy(const std::string& user) {
        return "Singleton (USER_DATA_REGISTER=USER_DATA_REGISTER) is still used by: [" + user + "]";
    }
};

TEST_F(PowerSubscriberTest, ExpectsTheMainLoopsThread) {
    FailingSubscriber subscriber;
    EXPECT_TRUE(subscriber.getExpectedExecutorThreadID() == boost::this_thread::get_id());
}

TEST_F(PowerSubscriberTest, UsesTheRegisterUnderTheNameOfItsSubclass) {
    const auto powerMode = factory.createPowerModeChangeSignalSubscriber();
    const auto powerOff = factory.createPowerOffSignalSubscriber();
    const auto wakeUp = factory.createPostWakeUpSignalSubscriber();
    dropWhenAsked(Common::Utils::USER_DATA_REGISTER, 1);
    EXPECT_ASSERTION_MSG(powerMode->subscribe(collect()), "false", registerIsUsedBy("PowerModeChangeSignalSubscriber"));
    EXPECT_ASSERTION_MSG(powerOff->subscribe(collect()), "false", registerIsUsedBy("PowerOffSignalSubscriber"));
    EXPECT_ASSERTION_MSG(wakeUp->subscribe([] {}), "false", registerIsUsedBy("WakeUpCbSubscriber"));
}

TEST_F(PowerSubscriberTest, UsesTheDistributorUnderTheNameOfItsSubclass) {
    const auto powerOff = factory.createPowerOffSignalSubscriber();
    dropWhenAsked(Common::Utils::POWER_OFF_CB_DISTRIBUTOR, 2); // the second to ask is the distributor's own subscriber
    EXPECT_ASSERTION_MSG(powerOff->subscribe(collect()), "false",
                         "Singleton (POWER_OFF_CB_DISTRIBUTOR=POWER_OFF_CB_DISTRIBUTOR) is still used by: "
                         "[PowerOffSignalSubscriber]");
}

TEST_F(PowerSubscriberTest, LogsAnExceptionAtItsEndAndLetsNoneOut) {
    {
        FailingSubscriber subscriber;
        subscriber.subscribe([] {});
    }
    EXPECT_THAT(FakeKovan::messages("ERR"), ElementsAre(AllOf(StartsWith("Exception was caught in FailingSubscriber: "),
                                                              HasSubstr("the device is gone"))));
}

class FailingWrapper : public FailingSubscriber {
public:
    ~FailingWrapper() override { unsubscribeAtEnd("FailingWrapper"); }

    void* id() const { return callbackId(); }

private:
    void* doRegisterCallback() override {
        return registerWrapper("FailingWrapper", [this](int state) {
            userCallback()();
            return state;
        });
    }
};

TEST_F(PowerSubscriberTest, KeepsItsWrapperForARunningCallbackAfterAFailureToUnsubscribe) {
    auto subscriber = std::make_unique<FailingWrapper>();
    const auto ofTheCallback = std::make_shared<int>();
    std::unique_ptr<OtherThread> owner;
    long users = 0;
    subscriber->subscribe([&owner, &subscriber, &users, ofTheCallback] {
        owner = std::make_unique<OtherThread>([&subscriber] { subscriber.reset(); });
        EXPECT_TRUE(owner->waitUntilItWaits());
        users = ofTheCallback.use_count();
    });
    EXPECT_EQ((Common::Utils::UserDataRegister::GenericFunctorCallback<int(int)>::call<-1>(5, subscriber->id())), 5);
    owner->finish();
    EXPECT_EQ(users, 3) << "the test, the running callback, and the subscriber that it may come back to";
    EXPECT_EQ(FakeKovan::countContaining("INF", "We need to unregister it."), 1);
}

TEST(PowerModeSubscribersFactorySlots, StandInTheirOrder) {
    using Factory = Platform::IPowerModeSubscribersFactory;
    EXPECT_EQ(slotsOf(&Factory::createPowerModeChangeSignalSubscriber, &Factory::createPowerOffSignalSubscriber,
                      &Factory::createPostWakeUpSignalSubscriber),
              slotsBehindTheDestructor(3));
}

} // namespace
} // namespace DAX::Tests
