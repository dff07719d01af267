#include "Utility/Utils/SingletonInstanceHandler.h"

#include <atomic>
#include <functional>
#include <stdexcept>

#include <gtest/gtest.h>

#include "support/OtherThread.h"

namespace DAX::Tests {
namespace {

struct Implementation {
    explicit Implementation(int theNumber) : number(theNumber) {}
    ~Implementation() { atEnd(); }

    int numberAfter(const std::function<void()>& action) {
        action();
        return number;
    }

    const int number;
    std::function<void()> atEnd = [] {};
};

using Handler = Common::Utils::SingletonInstanceHandler<Implementation>;

// Makes implementations with the numbers 1, 2, 3...
class SingletonInstanceHandlerTest : public testing::Test {
protected:
    std::atomic<int> made{0};
    Handler handler{[this] { return std::make_unique<Implementation>(++made); }};
};

TEST_F(SingletonInstanceHandlerTest, MakesTheImplementationAtTheFirstRequest) {
    EXPECT_EQ(made, 0);
    EXPECT_EQ(handler.getSingletonInstance()->number, 1);
    EXPECT_EQ(made, 1);
}

TEST_F(SingletonInstanceHandlerTest, GivesTheSameImplementationAgain) {
    EXPECT_EQ(handler.getSingletonInstance(), handler.getSingletonInstance());
    EXPECT_EQ(made, 1);
}

TEST_F(SingletonInstanceHandlerTest, NeedsNoFactoryForAnImplementationThatWasPutIn) {
    handler.setImplementationSingleton(std::make_unique<Implementation>(7));
    EXPECT_EQ(handler.getSingletonInstance()->number, 7);
    EXPECT_EQ(made, 0);
}

TEST_F(SingletonInstanceHandlerTest, ReplacesTheImplementation) {
    handler.getSingletonInstance();
    handler.setImplementationSingleton(std::make_unique<Implementation>(7));
    EXPECT_EQ(handler.getSingletonInstance()->number, 7);
}

TEST_F(SingletonInstanceHandlerTest, ReleasesTheOldImplementationBeforeItReturns) {
    bool released = false;
    handler.getSingletonInstance()->atEnd = [&released] { released = true; };
    handler.setImplementationSingleton(std::make_unique<Implementation>(7));
    EXPECT_TRUE(released);
}

TEST_F(SingletonInstanceHandlerTest, LetsOthersWaitWhileItReleasesTheOldImplementation) {
    std::unique_ptr<OtherThread> other;
    handler.getSingletonInstance()->atEnd = [&] {
        other = std::make_unique<OtherThread>([this] { EXPECT_EQ(handler.getSingletonInstance()->number, 7); });
        EXPECT_TRUE(other->waitUntilItWaits());
    };
    handler.setImplementationSingleton(std::make_unique<Implementation>(7));
    other->finish();
}

TEST_F(SingletonInstanceHandlerTest, LeavesTheOldImplementationToWhoHoldsIt) {
    bool released = false;
    std::shared_ptr<Implementation> held = handler.getSingletonInstance();
    held->atEnd = [&released] { released = true; };
    handler.setImplementationSingleton(std::make_unique<Implementation>(7));
    EXPECT_FALSE(released);

    held.reset();
    EXPECT_TRUE(released);
}

TEST_F(SingletonInstanceHandlerTest, CallsAnOperationOfTheImplementation) {
    EXPECT_EQ(handler->numberAfter([] {}), 1);
    EXPECT_EQ(handler->numberAfter([] {}), 1);
    EXPECT_EQ(made, 1);
}

TEST_F(SingletonInstanceHandlerTest, KeepsTheImplementationAliveOverTheCall) {
    bool released = false;
    handler.getSingletonInstance()->atEnd = [&released] { released = true; };
    const int number = handler->numberAfter([&] {
        handler.setImplementationSingleton(std::make_unique<Implementation>(7));
        EXPECT_FALSE(released);
    });
    EXPECT_EQ(number, 1);
    EXPECT_TRUE(released);
    EXPECT_EQ(handler->number, 7);
}

TEST_F(SingletonInstanceHandlerTest, MakesAnotherAfterTheImplementationWasTakenOut) {
    handler.getSingletonInstance();
    handler.setImplementationSingleton(nullptr);
    EXPECT_EQ(made, 1);
    EXPECT_EQ(handler.getSingletonInstance()->number, 2);
}

TEST_F(SingletonInstanceHandlerTest, ReleasesTheImplementationAtItsEnd) {
    bool released = false;
    {
        Handler local([] { return std::make_unique<Implementation>(1); });
        local.getSingletonInstance()->atEnd = [&released] { released = true; };
    }
    EXPECT_TRUE(released);
}

TEST_F(SingletonInstanceHandlerTest, AsksTheFactoryAgainWhenItGaveNothing) {
    int asked = 0;
    Handler hesitant([&asked]() -> std::unique_ptr<Implementation> {
        return ++asked < 3 ? nullptr : std::make_unique<Implementation>(asked);
    });
    EXPECT_EQ(hesitant.getSingletonInstance(), nullptr);
    EXPECT_EQ(hesitant.getSingletonInstance(), nullptr);
    EXPECT_EQ(hesitant.getSingletonInstance()->number, 3);
    EXPECT_EQ(hesitant.getSingletonInstance()->number, 3);
}

TEST_F(SingletonInstanceHandlerTest, LetsOutWhatTheFactoryThrowsAndAsksItAgain) {
    bool broken = true;
    Handler handlerOfABrokenOne(
        [&broken] { return broken ? throw std::domain_error("broken") : std::make_unique<Implementation>(5); });
    EXPECT_THROW(handlerOfABrokenOne.getSingletonInstance(), std::domain_error);
    broken = false;
    EXPECT_EQ(handlerOfABrokenOne.getSingletonInstance()->number, 5);
}

TEST_F(SingletonInstanceHandlerTest, CannotCallAnEmptyFactory) {
    Handler empty(nullptr);
    EXPECT_THROW(empty.getSingletonInstance(), std::bad_function_call);
    empty.setImplementationSingleton(std::make_unique<Implementation>(7));
    EXPECT_EQ(empty.getSingletonInstance()->number, 7);
}

TEST_F(SingletonInstanceHandlerTest, MakesOneImplementationForManyThreads) {
    {
        std::vector<std::unique_ptr<OtherThread>> threads;
        for (int i = 0; i < 8; ++i) {
            threads.push_back(
                std::make_unique<OtherThread>([this] { EXPECT_EQ(handler.getSingletonInstance()->number, 1); }));
        }
    }
    EXPECT_EQ(made, 1);
}

} // namespace
} // namespace DAX::Tests
