#include "Platform/SystemAPI/PowerModeSystemAPI/CPowerModeSubscribersFactory.h"

#include <gtest/gtest.h>

#include "support/Thrown.h"

namespace DAX {
namespace Tests {
namespace {

using Platform::CPowerModeSubscribersFactory;

template <class Subscriber, class Callback>
void expectASubscription(Subscriber subscriber, Callback callback) {
    ASSERT_TRUE(subscriber);
    subscriber->subscribe(callback);
    EXPECT_EQ(thrownDescription([&] { subscriber->subscribe(callback); }), "Already subscribed.");
    subscriber->unsubscribe();
    EXPECT_EQ(thrownDescription([&] { subscriber->unsubscribe(); }), "Not subscribed.");
    subscriber->subscribe(callback);
}

TEST(CPowerModeSubscribersFactory, MakesAPowerModeSubscriberThatUnsubscribesAtItsEnd) {
    expectASubscription(CPowerModeSubscribersFactory().createPowerModeChangeSignalSubscriber(),
                        [](DAXCommon::PowerMode) {});
}

TEST(CPowerModeSubscribersFactory, MakesAPowerOffSubscriberThatUnsubscribesAtItsEnd) {
    expectASubscription(CPowerModeSubscribersFactory().createPowerOffSignalSubscriber(), [](DAXCommon::PowerMode) {});
}

TEST(CPowerModeSubscribersFactory, MakesAWakeUpSubscriberThatUnsubscribesAtItsEnd) {
    expectASubscription(CPowerModeSubscribersFactory().createPostWakeUpSignalSubscriber(), [] {});
}

TEST(CPowerModeSubscribersFactory, MakesSubscribersThatNeedNoSubscription) {
    EXPECT_NO_THROW(CPowerModeSubscribersFactory().createPowerModeChangeSignalSubscriber().reset());
}

} // namespace
} // namespace Tests
} // namespace DAX
