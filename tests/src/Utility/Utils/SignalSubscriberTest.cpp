#include "Utility/Utils/SignalSubscriber.h"

#include <atomic>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "DlogHook.h"
#include "TestSubscriber.h"
#include "UserDataFixture.h"
#include "support/CompilerText.h"
#include "support/Event.h"
#include "support/NoMemory.h"
#include "support/OtherThread.h"
#include "support/ProcessDeath.h"
#include "support/Slots.h"
#include "support/Thrown.h"
#include "support/WaitUntil.h"

namespace DAX::Tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const char FAILED_BEFORE[] = "Probably an exception was thrown while subscribing the callback in exernal API. The "
                             "callback is not subscribed, but it was registered in UserDataRegister. We need to "
                             "unregister it.";

std::function<int(int)> returning(int result) {
    return [result](int) { return result; };
}

class SignalSubscriberTest : public UserDataFixture {
protected:
    void subscribeInVain() {
        subscriber.failsToSubscribe = true;
        EXPECT_THROW(subscriber.subscribe(returning(1)), std::domain_error);
        subscriber.failsToSubscribe = false;
    }

    // In the device's callback: waits until the test lets it go on.
    void pause() {
        m_begun.happen();
        EXPECT_TRUE(m_goOn.wait());
    }

    // The device signals the first callback of all, which pauses. Meanwhile `act` runs on a thread of its own, which is
    // seen to wait, and then `look`. In the end the callback goes on, and both threads come to their end.
    void whileACallbackRuns(
        const std::function<void()>& act, const std::function<void()>& look = [] {}) {
        OtherThread device(
            [] { EXPECT_EQ((UserDataRegister::GenericFunctorCallback<int(int)>::call<-1>(5, id(1))), 5); });
        ASSERT_TRUE(m_begun.wait());
        OtherThread acting(act);
        EXPECT_TRUE(acting.waitUntilItWaits());
        look();

        m_goOn.happen();

        acting.finish();
        device.finish();
    }

    TestSubscriber subscriber;

private:
    Event m_begun, m_goOn;
};

TEST_F(SignalSubscriberTest, RegistersTheCallbackBeforeItSubscribes) {
    subscriber.subscribe([](int value) { return value + 1; });
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("register", "subscribe"));
    EXPECT_EQ(subscriber.lastId(), id(1));
    EXPECT_EQ(subscriber.signal(41), 42);
}

TEST_F(SignalSubscriberTest, RefusesASecondCallbackAndKeepsTheFirst) {
    subscriber.subscribe(returning(1));
    EXPECT_EQ(thrownDescription([&] { subscriber.subscribe(returning(2)); }), "Already subscribed.");
    EXPECT_EQ(subscriber.signal(0), 1);
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("register", "subscribe"));
}

TEST_F(SignalSubscriberTest, RefusesToUnsubscribeWithoutASubscription) {
    EXPECT_EQ(thrownDescription([&] { subscriber.unsubscribe(); }), "Not subscribed.");
    EXPECT_THAT(FakeKovan::journal(), IsEmpty());
}

TEST_F(SignalSubscriberTest, RefusesToUnsubscribeTwice) {
    subscriber.subscribe(returning(1));
    subscriber.unsubscribe();
    EXPECT_EQ(thrownDescription([&] { subscriber.unsubscribe(); }), "Not subscribed.");
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("register", "subscribe", "unsubscribe"));
}

TEST_F(SignalSubscriberTest, UnsubscribesBeforeItUnregistersTheCallback) {
    subscriber.subscribe(returning(1));
    int signalled = 0;
    subscriber.atUnsubscription = [&] { signalled = subscriber.signal(0); };
    subscriber.unsubscribe();
    EXPECT_EQ(signalled, 1);
    EXPECT_EQ(subscriber.signal(0), -1);
    EXPECT_THAT(FakeKovan::journal("log"), ElementsAre("log WRN The callback is not registered or removed. ID:  0x1",
                                                       "log WRN The callback can not be called. ID:  0x1"));
}

TEST_F(SignalSubscriberTest, MaySubscribeAgain) {
    subscriber.subscribe(returning(1));
    subscriber.unsubscribe();
    subscriber.subscribe(returning(2));
    EXPECT_EQ(subscriber.lastId(), id(2));
    EXPECT_EQ(subscriber.signal(0), 2);
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("register", "subscribe", "unsubscribe", "register", "subscribe"));
}

TEST_F(SignalSubscriberTest, LogsNothingAtAnOrderlyEnd) {
    { const TestSubscriber idle; }
    {
        TestSubscriber used;
        used.subscribe(returning(1));
    }
    EXPECT_THAT(FakeKovan::logLines(), IsEmpty());
}

TEST_F(SignalSubscriberTest, MayNotEndSubscribed) {
    EXPECT_ASSERTION_MSG(
        {
            TestSubscriber careless;
            careless.unsubscribesAtItsEnd = false;
            careless.subscribe(returning(1));
        },
        "false", "Signal subscriber is still subscribed. Subclass should define an appropriate destructor.");
}

// --- A failure of the device ---------------------------------------------------------------------------------------

TEST_F(SignalSubscriberTest, IsNotSubscribedAfterAFailure) {
    subscribeInVain();
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("register", "subscribe"));
    EXPECT_EQ(thrownDescription([&] { subscriber.unsubscribe(); }), "Not subscribed.");
}

TEST_F(SignalSubscriberTest, LeavesTheCallbackRegisteredAfterAFailure) {
    subscribeInVain();
    EXPECT_EQ(subscriber.signal(0), 1);
}

TEST_F(SignalSubscriberTest, UnregistersTheCallbackOfAFailedSubscriptionAtItsEnd) {
    void* failed = nullptr;
    {
        TestSubscriber local;
        local.failsToSubscribe = true;
        EXPECT_THROW(local.subscribe(returning(1)), std::domain_error);
        failed = local.lastId();
    }
    EXPECT_THAT(FakeKovan::journal("log"), ElementsAre(std::string("log INF ") + FAILED_BEFORE));
    EXPECT_FALSE(static_cast<bool>(UserDataRegister::UserDataLock(failed)));
}

TEST_F(SignalSubscriberTest, MaySubscribeAgainAfterAFailure) {
    subscribeInVain();
    subscriber.subscribe(returning(2));
    EXPECT_EQ(subscriber.lastId(), id(2));
    EXPECT_EQ(subscriber.signal(0), 2);
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("register", "subscribe", "register", "subscribe"));
    EXPECT_FALSE(static_cast<bool>(UserDataRegister::UserDataLock(id(1)))) << "nobody will unregister it later";
}

TEST_F(SignalSubscriberTest, MayFailAgainAfterAFailure) {
    subscribeInVain();
    subscribeInVain();
    EXPECT_EQ(subscriber.lastId(), id(2));
    EXPECT_FALSE(static_cast<bool>(UserDataRegister::UserDataLock(id(1))));
}

TEST_F(SignalSubscriberTest, IsNotSubscribedAfterAFailureToUnsubscribe) {
    subscriber.subscribe(returning(1));
    subscriber.failsToUnsubscribe = true;
    EXPECT_THROW(subscriber.unsubscribe(), std::domain_error);
    EXPECT_EQ(thrownDescription([&] { subscriber.unsubscribe(); }), "Not subscribed.");
    EXPECT_EQ(subscriber.signal(0), 1) << "it is registered until the subscriber's end";
}

TEST_F(SignalSubscriberTest, UnregistersTheCallbackAtItsEndAfterAFailureToUnsubscribe) {
    {
        TestSubscriber local;
        local.subscribe(returning(1));
        local.failsToUnsubscribe = true;
        EXPECT_THROW(local.unsubscribe(), std::domain_error);
    }
    EXPECT_THAT(FakeKovan::journal("log"), ElementsAre(std::string("log INF ") + FAILED_BEFORE));
    EXPECT_FALSE(static_cast<bool>(UserDataRegister::UserDataLock(id(1))));
}

// --- What it needs of the register ---------------------------------------------------------------------------------

TEST_F(SignalSubscriberTest, NeedsTheRegister) {
    EXPECT_ASSERTION_MSG(
        {
            unmark<UserDataRegister>();
            subscriber.subscribe(returning(1));
        },
        "0", "Singleton USER_DATA_REGISTER does not exist.");
}

TEST_F(SignalSubscriberTest, MustBeDestroyedBeforeTheRegister) {
    EXPECT_ASSERTION_MSG(
        {
            subscriber.subscribe(returning(1));
            unmark<UserDataRegister>();
        },
        "0", "There are some unregistered callbacks!");
}

// What the process says when the register is destroyed while a member function of the subscriber uses it.
std::string usedBy(const std::string& result, const std::string& function) {
    const std::string of = compilerText("DAX::Common::Utils::SignalSubscriber<Callback>::",
                                        "DAX::Common::Utils::SignalSubscriber<int (int)>::");
    return "Singleton (USER_DATA_REGISTER=USER_DATA_REGISTER) is still used by: [" + result + of + function +
           compilerText(" [with Callback = int(int)]]", " [Callback = int (int)]]");
}

TEST_F(SignalSubscriberTest, RegistersUnderTheSignatureOfItsFunction) {
    subscriber.expectedExecutor = [] {
        unmark<UserDataRegister>();
        return boost::none;
    };
    EXPECT_ASSERTION_MSG(subscriber.subscribe(returning(1)), "false",
                         usedBy(compilerText("void* ", "virtual void *"), "doRegisterCallback()"));
}

TEST_F(SignalSubscriberTest, UnregistersUnderTheSignatureOfItsFunction) {
    EXPECT_ASSERTION_MSG(
        {
            subscriber.subscribe(returning(1));
            unregister(id(1)); // so that the register has something to log
            onLogLine("The callback has been already unregistered", unmark<UserDataRegister>);
            subscriber.unsubscribe();
        },
        "false", usedBy("void ", "unsubscribe()"));
}

TEST_F(SignalSubscriberTest, UnregistersUnderTheSignatureOfItsDestructor) {
    EXPECT_ASSERTION_MSG(
        {
            TestSubscriber local;
            local.failsToSubscribe = true;
            EXPECT_THROW(local.subscribe(returning(1)), std::domain_error);
            unregister(id(1));
            onLogLine("The callback has been already unregistered", unmark<UserDataRegister>);
        },
        "false", usedBy(compilerText("", "virtual "), "~SignalSubscriber()"));
}

// A subclass that wraps the callback.
class Wrapping : public Common::Utils::SignalSubscriber<void()> {
public:
    ~Wrapping() override { unsubscribe(); }
    int signal() const { return UserDataRegister::GenericFunctorCallback<int(int)>::call<-1>(7, callbackId()); }

private:
    using UserDataRegister = Common::Utils::UserDataRegister;

    void* doRegisterCallback() override {
        m_wrapper = [this](int value) {
            callback()();
            return value;
        };
        return service<UserDataRegister>("Wrapping")->registerUserData(&m_wrapper, boost::none);
    }
    boost::optional<boost::thread::id> getExpectedExecutorThreadID() override { return boost::none; }
    void doSubscribe() override {}
    int doUnsubscribe() override { return 0; }

    std::function<int(int)> m_wrapper;
};

TEST_F(SignalSubscriberTest, LetsASubclassRegisterAFunctionOfItsOwn) {
    Wrapping wrapping;
    wrapping.subscribe([] { FakeKovan::note("callback"); });
    EXPECT_EQ(wrapping.signal(), 7);
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("callback"));
}

// Makes its protected operations accessible.
class OpenSubscriber : public Common::Utils::SignalSubscriber<int(int)> {
public:
    using SignalSubscriber::doRegisterCallback;
    using SignalSubscriber::doSubscribe;
    using SignalSubscriber::doUnsubscribe;
    using SignalSubscriber::getExpectedExecutorThreadID;
};

TEST(SignalSubscriberSlots, AreInTheirOrder) {
    EXPECT_EQ(slotsOf(&OpenSubscriber::doRegisterCallback, &OpenSubscriber::getExpectedExecutorThreadID,
                      &OpenSubscriber::doSubscribe, &OpenSubscriber::doUnsubscribe),
              slotsBehindTheDestructor(4));
}

// --- Threads -------------------------------------------------------------------------------------------------------

TEST_F(SignalSubscriberTest, IsCalledBackOnTheExpectedThread) {
    subscriber.expectedExecutor = [] { return boost::this_thread::get_id(); };
    subscriber.subscribe(returning(1));
    EXPECT_EQ(subscriber.signal(0), 1);
}

TEST_F(SignalSubscriberTest, MayNotBeCalledBackOnAnotherThread) {
    subscriber.expectedExecutor = [] { return NOT_ANY_THREAD; };
    subscriber.subscribe(returning(1));
    EXPECT_ASSERTION_MSG(subscriber.signal(0), "0", wrongThread(NOT_ANY_THREAD));
}

TEST_F(SignalSubscriberTest, MayBeCalledBackOnAnotherThreadInProduction) {
    FakeKovan::setProduction(true);
    subscriber.expectedExecutor = [] { return NOT_ANY_THREAD; };
    subscriber.subscribe(returning(1));
    EXPECT_EQ(subscriber.signal(0), 1);
}

TEST_F(SignalSubscriberTest, WaitsForARunningCallbackWhenItUnsubscribes) {
    subscriber.subscribe([this](int value) {
        pause();
        FakeKovan::note("callback ends");
        return value;
    });
    whileACallbackRuns([this] {
        subscriber.unsubscribe();
        FakeKovan::note("unsubscribed");
    });
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("register", "subscribe", "unsubscribe", "callback ends", "unsubscribed"));
}

TEST_F(SignalSubscriberTest, LetsARunningCallbackThatItWaitsForUnsubscribeIt) {
    subscriber.subscribe([this](int value) {
        pause();
        subscriber.unsubscribe();
        FakeKovan::note("callback ends");
        return value;
    });
    whileACallbackRuns([this] {
        subscriber.unsubscribe();
        FakeKovan::note("unsubscribed");
    });
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("register", "subscribe", "unsubscribe", "callback ends", "unsubscribed"));
}

TEST_F(SignalSubscriberTest, IsNotSubscribedForAnotherThreadWhileItWaitsForARunningCallback) {
    subscriber.subscribe([this](int value) {
        pause();
        return value;
    });
    whileACallbackRuns(
        [this] { subscriber.unsubscribe(); },
        [this] { EXPECT_EQ(thrownDescription([this] { subscriber.unsubscribe(); }), "Not subscribed."); });
}

TEST_F(SignalSubscriberTest, WaitsForTheEndOfAnUnsubscriptionBeforeItSubscribesAgain) {
    subscriber.subscribe([this](int value) {
        pause();
        FakeKovan::note("callback ends");
        return value;
    });
    std::unique_ptr<OtherThread> subscribing;
    whileACallbackRuns([this] { subscriber.unsubscribe(); },
                       [&] {
                           subscribing = std::make_unique<OtherThread>([this] { subscriber.subscribe(returning(9)); });
                           EXPECT_TRUE(subscribing->waitUntilItWaits());
                       });
    subscribing->finish();
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("register", "subscribe", "unsubscribe", "callback ends", "register", "subscribe"));
    EXPECT_EQ(subscriber.signal(0), 9);
}

TEST_F(SignalSubscriberTest, LetsItsCallbackUnsubscribeIt) {
    subscriber.subscribe([this](int value) {
        subscriber.unsubscribe();
        return value;
    });
    EXPECT_EQ(subscriber.signal(5), 5);
    EXPECT_EQ(subscriber.signal(5), -1);
    EXPECT_EQ(thrownDescription([&] { subscriber.unsubscribe(); }), "Not subscribed.");
}

TEST_F(SignalSubscriberTest, LetsItsCallbackSubscribeAnotherOneInItsPlace) {
    subscriber.subscribe([this](int value) {
        subscriber.unsubscribe();
        subscriber.subscribe(returning(9));
        return value;
    });
    EXPECT_EQ(subscriber.signal(5), 5);
    EXPECT_EQ(subscriber.signal(5), 9);
}

TEST_F(SignalSubscriberTest, LetsItsCallbackDestroyIt) {
    auto ending = std::make_unique<TestSubscriber>();
    ending->subscribe([&ending](int value) {
        ending.reset();
        return value;
    });
    void* const itsId = ending->lastId();
    EXPECT_EQ((UserDataRegister::GenericFunctorCallback<int(int)>::call<-1>(5, itsId)), 5);
    EXPECT_EQ(ending, nullptr);
}

// A subscriber that its owner destroys on another thread than the device's.
class EndingSubscriberTest : public SignalSubscriberTest {
protected:
    // Destroys the subscriber on a thread of its own.
    void end() {
        ending.reset();
        FakeKovan::note("ended");
    }

    std::unique_ptr<TestSubscriber> ending = std::make_unique<TestSubscriber>();
};

TEST_F(EndingSubscriberTest, WaitsForACallbackThatHasUnsubscribedIt) {
    ending->subscribe([this](int value) {
        ending->unsubscribe();
        pause();
        FakeKovan::note("callback ends");
        return value;
    });
    whileACallbackRuns([this] { end(); });
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("register", "subscribe", "unsubscribe", "callback ends", "ended"));
}

TEST_F(EndingSubscriberTest, WaitsForACallbackThatIsUnsubscribingIt) {
    EXPECT_IN_CHILD({
        onLogLine("The callback has been already unregistered", [this] { pause(); });
        ending->subscribe([this](int value) {
            unregister(id(1)); // so that the register has something to log while the subscriber unregisters
            ending->unsubscribe();
            FakeKovan::note("callback ends");
            return value;
        });
        whileACallbackRuns([this] { end(); });
        EXPECT_EQ(FakeKovan::journal().back(), "ended");
        EXPECT_EQ(FakeKovan::journal().at(FakeKovan::journal().size() - 2), "callback ends");
    });
}

TEST_F(EndingSubscriberTest, WaitsForACallbackThatUnsubscribesItMeanwhile) {
    ending->subscribe([this, local = ending.get()](int value) {
        pause();
        local->unsubscribe();
        FakeKovan::note("callback ends");
        return value;
    });
    whileACallbackRuns([this] { end(); });
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("register", "subscribe", "unsubscribe", "callback ends", "ended"));
}

TEST_F(EndingSubscriberTest, WaitsForACallbackThatHasSubscribedAnotherInItsPlace) {
    ending->subscribe([this](int value) {
        ending->unsubscribe();
        ending->subscribe(returning(9));
        pause();
        FakeKovan::note("callback ends");
        return value;
    });
    whileACallbackRuns([this] { end(); });
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("register", "subscribe", "unsubscribe", "register", "subscribe",
                                                  "unsubscribe", "callback ends", "ended"));
    EXPECT_FALSE(static_cast<bool>(UserDataRegister::UserDataLock(id(2))));
}

TEST_F(EndingSubscriberTest, UnsubscribesWhatARunningCallbackSubscribesMeanwhile) {
    ending->subscribe([this, local = ending.get()](int value) {
        local->unsubscribe();
        pause();
        local->subscribe(returning(9));
        FakeKovan::note("callback ends");
        return value;
    });
    whileACallbackRuns([this] { end(); });
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("register", "subscribe", "unsubscribe", "register", "subscribe",
                                                  "callback ends", "unsubscribe", "ended"));
}

TEST_F(SignalSubscriberTest, LetsALeftoverCallbackUnsubscribeItWhileItIsReplaced) {
    subscriber.subscribe([this](int value) {
        pause();
        subscriber.unsubscribe();
        return value;
    });
    subscriber.failsToUnsubscribe = true;
    EXPECT_THROW(subscriber.unsubscribe(), std::domain_error);
    subscriber.failsToUnsubscribe = false;
    whileACallbackRuns([this] { subscriber.subscribe(returning(9)); });
    EXPECT_EQ(subscriber.signal(0), 9);
}

// Unsubscribes while memory runs out after so many allocations; returns false when that fails.
bool unsubscribesWith(std::size_t allocations, TestSubscriber& subscriber) {
    std::unique_ptr<NoMemory> noMemory;
    subscriber.atUnsubscription = [&noMemory, allocations] { noMemory = std::make_unique<NoMemory>(allocations); };
    try {
        subscriber.unsubscribe();
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

TEST_F(SignalSubscriberTest, StaysUsableWhereverUnregisteringItsCallbackFails) {
    std::size_t allocations = 0;
    for (bool succeeded = false; !succeeded; ++allocations) {
        TestSubscriber failing;
        failing.subscribe(returning(1));
        succeeded = unsubscribesWith(allocations, failing);
        EXPECT_EQ(failing.signal(0), succeeded ? -1 : 1) << "it is registered until the next subscription";
        EXPECT_EQ(thrownDescription([&] { failing.unsubscribe(); }), "Not subscribed.");
        failing.subscribe(returning(2));
        EXPECT_EQ(failing.signal(0), 2);
        failing.atUnsubscription = [] {};
        failing.unsubscribe();
        EXPECT_EQ(failing.signal(0), -1);
    }
    EXPECT_GT(allocations, 2U) << "it has not failed where it names itself to the register";
}

TEST_F(SignalSubscriberTest, LetsItsCallbackHandleOtherSubscribers) {
    TestSubscriber other;
    subscriber.subscribe([&other](int value) {
        other.subscribe(returning(9));
        const int result = value + other.signal(0);
        other.unsubscribe();
        return result;
    });
    EXPECT_EQ(subscriber.signal(1), 10);
}

TEST_F(SignalSubscriberTest, NeverCallsBackAfterItsEnd) {
    std::atomic<void*> current{nullptr};
    std::atomic<bool> done{false};
    std::atomic<int> callsBehindTheEnd{0};
    OtherThread device([&] {
        while (!done) {
            UserDataRegister::GenericFunctorCallback<int(int)>::call<-1>(1, current);
        }
    });
    for (int i = 0; i < 300; ++i) {
        std::atomic<int> calls{0};
        std::atomic<bool> ended{false};
        {
            TestSubscriber local;
            local.subscribe([&](int value) {
                ++calls;
                std::this_thread::yield();
                callsBehindTheEnd += ended ? 1 : 0;
                return value;
            });
            current = local.lastId();
            EXPECT_TRUE(waitUntil([&calls] { return calls > 0; }));
        }
        ended = true;
        FakeKovan::forgetRecords();
    }
    done = true;
    device.finish();
    EXPECT_EQ(callsBehindTheEnd, 0);
}

TEST_F(SignalSubscriberTest, IsSubscribedByOneOfManyThreads) {
    std::atomic<int> refused{0};
    {
        std::vector<std::unique_ptr<OtherThread>> threads;
        for (int i = 0; i < 4; ++i) {
            threads.push_back(std::make_unique<OtherThread>([&] {
                try {
                    subscriber.subscribe(returning(1));
                } catch (const Common::Utils::GenericException&) {
                    ++refused;
                }
            }));
        }
    }
    EXPECT_EQ(refused, 3);
    EXPECT_EQ(subscriber.signal(0), 1);
}

} // namespace
} // namespace DAX::Tests
