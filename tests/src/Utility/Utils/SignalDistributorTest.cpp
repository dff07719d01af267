#include "Utility/Utils/SignalDistributor.h"

#include <atomic>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "TestSubscriber.h"
#include "UserDataFixture.h"
#include "Utility/Utils/SingletonProperty.h"
#include "support/Event.h"
#include "support/OtherThread.h"
#include "support/Slots.h"

namespace DAX::Tests {
namespace {

using Common::Utils::SignalSubscriber;
using testing::ElementsAre;
using testing::IsEmpty;
using Trampoline = Common::Utils::UserDataRegister::GenericFunctorCallback<int(int)>;

// Only one may exist at a time, as with a signal that accepts one subscription.
class LowLevelSubscriber : public TestSubscriber, private Common::Utils::SingletonProperty<LowLevelSubscriber> {};

class TestDistributor : public Common::Utils::SignalDistributor<int(int)> {
public:
    ~TestDistributor() override {
        if (lowLevelSubscriber() != nullptr && initialized) {
            lowLevelSubscriber()->unsubscribe();
        }
    }

    // Sends the device's signal. Needs a low-level subscriber.
    int signal(int value) { return dynamic_cast<TestSubscriber&>(*lowLevelSubscriber()).signal(value); }

    bool hasLowLevelSubscriber() { return lowLevelSubscriber() != nullptr; }

    bool initialized = true;
    bool signalsAtOnce = false;
    bool failsToSubscribe = false;
    bool failsToMakeASubscriber = false;
    bool failsToMakeTheMultiCallback = false;

private:
    std::unique_ptr<SignalSubscriber<int(int)>> doCreateLowLevelSubscriber() override {
        FakeKovan::note("create");
        if (failsToMakeASubscriber) {
            throw std::domain_error("no subscriber");
        }
        auto subscriber = std::make_unique<LowLevelSubscriber>();
        subscriber->failsToSubscribe = failsToSubscribe;
        subscriber->atSubscription = [this, device = subscriber.get()] {
            if (signalsAtOnce) {
                EXPECT_EQ(device->signal(7), 0);
            }
        };
        return subscriber;
    }
    std::function<int(int)> doGetMultiCallback() override {
        FakeKovan::note("multi callback");
        if (failsToMakeTheMultiCallback) {
            throw std::domain_error("no callback");
        }
        return [this](int value) {
            for (void* const id : subscribers()) {
                Trampoline::call<-1>(value, id);
            }
            return 0;
        };
    }
};

// A listener that notes its name and the signal's value: "a 5".
class Listener {
public:
    explicit Listener(
        std::string name, std::function<void()> action = [] {})
        : m_name(std::move(name)), m_action(std::move(action)) {}
    ~Listener() { unregister(); }

    void* id() const { return m_id; }

    void unregister() {
        if (m_id != nullptr) {
            service<Common::Utils::UserDataRegister>("test")->unregisterUserData(std::exchange(m_id, nullptr));
        }
    }

private:
    const std::string m_name;
    const std::function<void()> m_action;
    std::function<int(int)> m_function = [this](int value) {
        FakeKovan::note(m_name + " " + std::to_string(value));
        m_action();
        return 99;
    };
    void* m_id = service<Common::Utils::UserDataRegister>("test")->registerUserData(&m_function, boost::none);
};

class SignalDistributorTest : public UserDataFixture {
protected:
    // The listeners' notes of a signal.
    std::vector<std::string> notesOf(int value) {
        FakeKovan::forgetRecords();
        EXPECT_EQ(distributor.signal(value), 0);
        return FakeKovan::journal();
    }

    void initializeInVain() {
        distributor.initialized = false;
        EXPECT_THROW(distributor.initialize(), std::domain_error);
        distributor.failsToSubscribe = false;
        distributor.failsToMakeASubscriber = false;
        distributor.failsToMakeTheMultiCallback = false;
        FakeKovan::forgetRecords();
    }
    void initializeAtLast() {
        distributor.initialize();
        distributor.initialized = true;
    }

    TestDistributor distributor;
};

// --- The one subscription ------------------------------------------------------------------------------------------

TEST_F(SignalDistributorTest, SubscribesToTheSignal) {
    distributor.initialize();
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("create", "multi callback", "register", "subscribe"));
}

TEST_F(SignalDistributorTest, SubscribesToTheSignalOnce) {
    distributor.initialize();
    FakeKovan::forgetRecords();
    distributor.initialize();
    EXPECT_THAT(FakeKovan::journal(), IsEmpty());
}

TEST_F(SignalDistributorTest, PassesOnASignalThatComesDuringTheSubscription) {
    const Listener a("a");
    distributor.subscribe(a.id());
    distributor.signalsAtOnce = true;
    distributor.initialize();
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("create", "multi callback", "register", "subscribe", "a 7"));
}

TEST_F(SignalDistributorTest, HasNoSubscriberBeforeItIsInitialized) {
    EXPECT_FALSE(distributor.hasLowLevelSubscriber());
}

TEST_F(SignalDistributorTest, StaysSubscribedWithoutListeners) {
    const Listener a("a");
    distributor.initialize();
    distributor.subscribe(a.id());
    FakeKovan::forgetRecords();
    distributor.unsubscribe(a.id());
    EXPECT_THAT(FakeKovan::journal(), IsEmpty());
    EXPECT_THAT(notesOf(5), IsEmpty()) << "but the signal came";
}

TEST_F(SignalDistributorTest, IsSubscribedUntilItsEnd) {
    {
        TestDistributor local;
        local.initialize();
        FakeKovan::forgetRecords();
    }
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("unsubscribe"));
}

TEST_F(SignalDistributorTest, TriesAgainAfterASubscriptionThatFailed) {
    distributor.failsToSubscribe = true;
    initializeInVain();
    initializeAtLast();
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log INF Probably an exception was thrown while subscribing the callback in exernal API. "
                            "The callback is not subscribed, but it was registered in UserDataRegister. We need to "
                            "unregister it.",
                            "create", "multi callback", "register", "subscribe"))
        << "there may be one subscriber only, so the first goes before";
    EXPECT_EQ(distributor.signal(5), 0);
}

TEST_F(SignalDistributorTest, TriesAgainWhenNoSubscriberCouldBeMade) {
    distributor.failsToMakeASubscriber = true;
    initializeInVain();
    initializeAtLast();
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("create", "multi callback", "register", "subscribe"));
}

TEST_F(SignalDistributorTest, TriesAgainWhenTheMultiCallbackCouldNotBeMade) {
    distributor.failsToMakeTheMultiCallback = true;
    initializeInVain();
    initializeAtLast();
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("create", "multi callback", "register", "subscribe"));
}

TEST_F(SignalDistributorTest, IsInitializedOnceByManyThreads) {
    {
        std::vector<std::unique_ptr<OtherThread>> threads;
        for (int i = 0; i < 4; ++i) {
            threads.push_back(std::make_unique<OtherThread>([this] { distributor.initialize(); }));
        }
    }
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("create", "multi callback", "register", "subscribe"));
}

// --- The listeners -------------------------------------------------------------------------------------------------

class SubscribedDistributorTest : public SignalDistributorTest {
protected:
    SubscribedDistributorTest() { distributor.initialize(); }
};

TEST_F(SubscribedDistributorTest, CallsEachListenerInTheOrderOfTheirIds) {
    const Listener a("a"), b("b"), c("c");
    for (const Listener* const listener : {&b, &c, &a}) {
        distributor.subscribe(listener->id());
    }
    EXPECT_THAT(notesOf(5), ElementsAre("a 5", "b 5", "c 5"));
}

TEST_F(SignalDistributorTest, TakesListenersBeforeItIsSubscribed) {
    TestDistributor early;
    const Listener a("a");
    early.subscribe(a.id());
    early.initialize();
    FakeKovan::forgetRecords();
    early.signal(5);
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("a 5"));
}

TEST_F(SubscribedDistributorTest, LogsAListenerThatIsAlreadySubscribedAndKeepsIt) {
    const Listener a("a");
    distributor.subscribe(a.id());
    FakeKovan::forgetRecords();
    distributor.subscribe(a.id());
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log ERR Callback with id:0x2 is already subscribed"));
    EXPECT_THAT(notesOf(5), ElementsAre("a 5"));
}

TEST_F(SubscribedDistributorTest, LogsAListenerThatIsNoLongerSubscribed) {
    const Listener a("a");
    distributor.subscribe(a.id());
    distributor.unsubscribe(a.id());
    FakeKovan::forgetRecords();
    distributor.unsubscribe(a.id());
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log ERR Callback with id:0x2 is already unsubscribed"));
}

TEST_F(SubscribedDistributorTest, LogsTheNullListener) {
    FakeKovan::forgetRecords();
    distributor.unsubscribe(nullptr);
    distributor.subscribe(nullptr);
    distributor.subscribe(nullptr);
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log ERR Callback with id:[nullptr] is already unsubscribed",
                                                  "log ERR Callback with id:[nullptr] is already subscribed"));
}

TEST_F(SubscribedDistributorTest, DoesNotCallAListenerThatWasUnsubscribed) {
    const Listener a("a"), b("b");
    distributor.subscribe(a.id());
    distributor.subscribe(b.id());
    distributor.unsubscribe(a.id());
    EXPECT_THAT(notesOf(5), ElementsAre("b 5"));
}

TEST_F(SubscribedDistributorTest, SkipsAListenerThatIsUnregistered) {
    Listener a("a");
    const Listener b("b");
    distributor.subscribe(a.id());
    distributor.subscribe(b.id());
    a.unregister();
    EXPECT_THAT(notesOf(5), ElementsAre("log WRN The callback is not registered or removed. ID:  0x2",
                                        "log WRN The callback can not be called. ID:  0x2", "b 5"));
}

TEST_F(SubscribedDistributorTest, LetsAListenerUnsubscribeItself) {
    Listener* self = nullptr;
    Listener a("a", [&] { distributor.unsubscribe(self->id()); });
    self = &a;
    const Listener b("b");
    distributor.subscribe(a.id());
    distributor.subscribe(b.id());
    EXPECT_THAT(notesOf(5), ElementsAre("a 5", "b 5"));
    EXPECT_THAT(notesOf(6), ElementsAre("b 6"));
}

TEST_F(SubscribedDistributorTest, LetsAListenerUnsubscribeAndUnregisterItself) {
    Listener* self = nullptr;
    Listener a("a", [&] {
        distributor.unsubscribe(self->id());
        self->unregister();
    });
    self = &a;
    distributor.subscribe(a.id());
    EXPECT_THAT(notesOf(5), ElementsAre("a 5"));
    EXPECT_THAT(notesOf(6), IsEmpty());
}

TEST_F(SubscribedDistributorTest, CallsAListenerThatIsUnsubscribedDuringTheSignalForTheLastTime) {
    void* bId = nullptr;
    const Listener a("a", [&] { distributor.unsubscribe(bId); });
    const Listener b("b");
    bId = b.id();
    distributor.subscribe(a.id());
    distributor.subscribe(b.id());
    EXPECT_THAT(notesOf(5), ElementsAre("a 5", "b 5"));
}

TEST_F(SubscribedDistributorTest, CallsAListenerThatIsSubscribedDuringTheSignalFromTheNextOneOn) {
    std::unique_ptr<Listener> late;
    const Listener a("a", [&] {
        if (!late) {
            late = std::make_unique<Listener>("late");
            distributor.subscribe(late->id());
        }
    });
    distributor.subscribe(a.id());
    EXPECT_THAT(notesOf(5), ElementsAre("a 5"));
    EXPECT_THAT(notesOf(6), ElementsAre("a 6", "late 6"));
}

TEST_F(SubscribedDistributorTest, ServesListenersOfManyThreadsDuringSignals) {
    std::atomic<bool> done{false};
    OtherThread device([&] {
        while (!done) {
            EXPECT_EQ(distributor.signal(5), 0);
        }
    });
    {
        std::vector<std::unique_ptr<OtherThread>> threads;
        for (int i = 0; i < 3; ++i) {
            threads.push_back(std::make_unique<OtherThread>([this] {
                for (int round = 0; round < 100; ++round) {
                    Listener listener("a");
                    distributor.subscribe(listener.id());
                    distributor.unsubscribe(listener.id());
                }
            }));
        }
    }
    done = true;
}

TEST_F(SubscribedDistributorTest, LetsListenersUnsubscribeThemselvesDuringTheSignalsOfAnotherThread) {
    std::atomic<bool> done{false};
    OtherThread device([&] {
        while (!done) {
            EXPECT_EQ(distributor.signal(5), 0);
        }
    });
    for (int round = 0; round < 100; ++round) {
        Event heard;
        std::atomic<Listener*> self{nullptr};
        Listener listener("a", [&] {
            if (Listener* const itself = self.exchange(nullptr)) {
                distributor.unsubscribe(itself->id());
                heard.happen();
            }
        });
        self = &listener;
        distributor.subscribe(listener.id());
        ASSERT_TRUE(heard.wait());
        FakeKovan::forgetRecords();
    }
    done = true;
}

// Makes its protected operations accessible.
class OpenDistributor : public Common::Utils::SignalDistributor<int(int)> {
public:
    using SignalDistributor::doCreateLowLevelSubscriber;
    using SignalDistributor::doGetMultiCallback;
};

TEST(SignalDistributorSlots, AreInTheirOrder) {
    EXPECT_EQ(slotsOf(&OpenDistributor::doCreateLowLevelSubscriber, &OpenDistributor::doGetMultiCallback),
              slotsBehindTheDestructor(2));
}

} // namespace
} // namespace DAX::Tests
