#include "Utility/Utils/SignalSubscriber.h"

#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/ProcessDeath.h"
#include "support/Thrown.h"

namespace DAX {
namespace Tests {
namespace {

using ::testing::ElementsAre;

// Fires by hand; `calls` is the order of its slots.
class Subscriber : public Common::Utils::SignalSubscriber<int(int)> {
public:
    ~Subscriber() override {
        if (unsubscribesAtItsEnd && isSubscribed()) {
            unsubscribe();
        }
    }

    int fire(int value) { return callback()(value); }

    std::vector<std::string> calls;
    bool failsToSubscribe = false;
    bool unsubscribesAtItsEnd = true;

private:
    void* doRegisterCallback() override {
        calls.push_back("register");
        return this;
    }
    boost::optional<boost::thread::id> getExpectedExecutorThreadID() override { return boost::none; }
    void doSubscribe() override {
        EXPECT_EQ(callbackId(), this);
        calls.push_back("subscribe");
        if (failsToSubscribe) {
            throw std::runtime_error("no signal");
        }
    }
    int doUnsubscribe() override {
        calls.push_back("unsubscribe");
        return -1;
    }
};

TEST(SignalSubscriber, RegistersTheCallbackBeforeItSubscribes) {
    Subscriber subscriber;
    subscriber.subscribe([](int value) { return value + 1; });
    EXPECT_THAT(subscriber.calls, ElementsAre("register", "subscribe"));
    EXPECT_EQ(subscriber.fire(41), 42);
}

TEST(SignalSubscriber, RefusesASecondCallbackAndKeepsTheFirst) {
    Subscriber subscriber;
    subscriber.subscribe([](int) { return 1; });
    EXPECT_EQ(thrownDescription([&] { subscriber.subscribe([](int) { return 2; }); }), "Already subscribed.");
    EXPECT_EQ(subscriber.fire(0), 1);
    EXPECT_THAT(subscriber.calls, ElementsAre("register", "subscribe"));
}

TEST(SignalSubscriber, RefusesToUnsubscribeWithoutASubscription) {
    Subscriber subscriber;
    EXPECT_EQ(thrownDescription([&] { subscriber.unsubscribe(); }), "Not subscribed.");
    EXPECT_TRUE(subscriber.calls.empty());
}

TEST(SignalSubscriber, MaySubscribeAgain) {
    Subscriber subscriber;
    subscriber.subscribe([](int) { return 1; });
    subscriber.unsubscribe();
    subscriber.subscribe([](int) { return 2; });
    EXPECT_EQ(subscriber.fire(0), 2);
    EXPECT_THAT(subscriber.calls, ElementsAre("register", "subscribe", "unsubscribe", "register", "subscribe"));
}

TEST(SignalSubscriber, IsNotSubscribedAfterAFailure) {
    Subscriber subscriber;
    subscriber.failsToSubscribe = true;
    EXPECT_THROW(subscriber.subscribe([](int) { return 1; }), std::runtime_error);
    EXPECT_EQ(thrownDescription([&] { subscriber.unsubscribe(); }), "Not subscribed.");
}

TEST(SignalSubscriber, MayNotEndSubscribed) {
    EXPECT_ASSERTION_MSG(
        {
            Subscriber subscriber;
            subscriber.unsubscribesAtItsEnd = false;
            subscriber.subscribe([](int) { return 1; });
        },
        "false", "Signal subscriber is still subscribed. Subclass should define an appropriate destructor.");
}

} // namespace
} // namespace Tests
} // namespace DAX
