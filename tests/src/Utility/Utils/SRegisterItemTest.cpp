#include "Utility/Utils/SRegisterItem.h"

#include <functional>
#include <utility>

#include <boost/thread/thread.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/ProcessDeath.h"

namespace DAX::Tests {
namespace {

using namespace Common::Utils;

class Registerable : public RegisterableSingleton {
public:
    explicit Registerable(std::function<void()> atEnd = [] {}) : m_atEnd(std::move(atEnd)) {}
    ~Registerable() override { m_atEnd(); }

private:
    const std::function<void()> m_atEnd;
};

std::unique_ptr<SRegisterItem> makeItem(SingletonsID id = G_MAIN_LOOP) {
    return std::make_unique<SRegisterItem>(std::make_shared<Registerable>(), id, std::list<SingletonsID>{});
}

TEST(SRegisterItemTest, HasTheSingletonAndItsRequirements) {
    const auto singleton = std::make_shared<Registerable>();
    const SRegisterItem item(singleton, DUMMY_SINGLETON, {USER_DATA_REGISTER, G_MAIN_LOOP});

    EXPECT_EQ(item.getRegisterable(), singleton);
    EXPECT_THAT(item.getRequirements(), testing::ElementsAre(USER_DATA_REGISTER, G_MAIN_LOOP));
}

TEST(SRegisterItemTest, SaysWhenItIsNoLongerNeeded) {
    const auto item = makeItem();
    item->incrementNeeded();
    item->incrementNeeded();

    EXPECT_FALSE(item->decrementNeeded());
    EXPECT_TRUE(item->decrementNeeded());
}

TEST(SRegisterItemTest, IsTheOnlyOwnerOfItsSingleton) {
    auto item = makeItem();
    const std::weak_ptr<RegisterableSingleton> singleton = item->getRegisterable();
    EXPECT_EQ(singleton.use_count(), 1);

    item.reset();

    EXPECT_TRUE(singleton.expired());
}

TEST(SRegisterItemTest, MayNotEndWhileItIsNeeded) {
    EXPECT_ASSERTION_WITHOUT_MSG(makeItem()->incrementNeeded(), "m_neededCnt == 0");
}

TEST(SRegisterItemTest, MayNotEndWhileItIsUsed) {
    EXPECT_ASSERTION_MSG(makeItem()->incrementUsage("somebody"), "false",
                         "Singleton (G_MAIN_LOOP=G_MAIN_LOOP) is still used by: [somebody]");
}

TEST(SRegisterItemTest, NamesAllItsUsersAtItsEndInTheirOrder) {
    EXPECT_ASSERTION_MSG(
        {
            const auto item = makeItem(static_cast<SingletonsID>(99));
            for (const char* const user : {"b", "a", "", "b"}) {
                item->incrementUsage(user);
            }
        },
        "false",
        "Singleton (Error: singleton identifier not recognized (99)=Error: singleton identifier not recognized (99)) "
        "is still used by: [b] [a] [] [b]");
}

TEST(SRegisterItemTest, ChecksItsNeedsBeforeItsUsers) {
    EXPECT_ASSERTION_WITHOUT_MSG(
        {
            const auto item = makeItem();
            item->incrementUsage("somebody");
            item->incrementNeeded();
        },
        "m_neededCnt == 0");
}

TEST(SRegisterItemTest, ForgetsTheFirstUserOfThatName) {
    EXPECT_ASSERTION_MSG(
        {
            const auto item = makeItem();
            for (const char* const user : {"a", "twice", "b", "twice", "c"}) {
                item->incrementUsage(user);
            }
            item->decrementUsage("twice");
        },
        "false", "Singleton (G_MAIN_LOOP=G_MAIN_LOOP) is still used by: [a] [b] [twice] [c]");
}

TEST(SRegisterItemTest, ForgetsAUserAsOftenAsItWasNamed) {
    const auto item = makeItem();
    item->incrementUsage("twice");
    item->incrementUsage("twice");
    item->decrementUsage("twice");
    item->decrementUsage("twice");

    EXPECT_ASSERTION_MSG(item->decrementUsage("twice"), "false",
                         "User 'twice' is not registered as user of this singleton (G_MAIN_LOOP=G_MAIN_LOOP)");
}

TEST(SRegisterItemTest, DoesNotForgetAUserThatItDoesNotKnow) {
    const auto item = makeItem(USER_DATA_REGISTER);
    EXPECT_ASSERTION_MSG(
        item->decrementUsage("nobody"), "false",
        "User 'nobody' is not registered as user of this singleton (USER_DATA_REGISTER=USER_DATA_REGISTER)");
}

TEST(SRegisterItemTest, ChecksItsUseBeforeItDestroysTheSingleton) {
    EXPECT_EXIT(
        {
            auto item = std::make_unique<SRegisterItem>(std::make_shared<Registerable>([] { std::_Exit(3); }),
                                                        G_MAIN_LOOP, std::list<SingletonsID>{});
            item->incrementUsage("somebody");
            item.reset();
        },
        testing::KilledBySignal(SIGABRT), "");
}

TEST(SRegisterItemTest, MayBeInterruptedAgainWhenItDestroysTheSingleton) {
    bool mayBeInterrupted = false;
    boost::thread thread([&] {
        const SRegisterItem item(std::make_shared<Registerable>([&] {
                                     mayBeInterrupted = boost::this_thread::interruption_enabled() &&
                                                        boost::this_thread::interruption_requested();
                                 }),
                                 G_MAIN_LOOP, {});
        while (!boost::this_thread::interruption_requested()) {
            boost::this_thread::yield();
        }
    });
    thread.interrupt();
    thread.join();

    EXPECT_TRUE(mayBeInterrupted);
}

} // namespace
} // namespace DAX::Tests
