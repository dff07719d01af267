#include "Utility/Utils/SingletonPointer.h"

#include <memory>

#include <gtest/gtest.h>

#include "TestSingletons.h"
#include "Utility/Utils/SingletonServiceGuard.h"
#include "support/ProcessDeath.h"

namespace DAX::Tests {
namespace {

using namespace Common::Utils;

const char GONE[] = "You are trying to use non-existent singleton! It has been probably destroyed since your "
                    "getService. Check scopes of the singleton's guards";

std::shared_ptr<SRegisterItem> makeItem() {
    return std::make_shared<SRegisterItem>(SingletonsRegister::defaultFactory<Base>(), Base::getID(),
                                           std::list<SingletonsID>{});
}

TEST(SingletonPointerTest, ReachesTheSingleton) {
    const auto item = makeItem();
    SingletonPointer<Base> pointer("test", item);

    EXPECT_EQ(pointer.operator->(), item->getRegisterable().get());
    EXPECT_EQ(pointer->answer(), 42);
}

TEST(SingletonPointerTest, ReachesTheSingletonAsOneOfItsBases) {
    const auto item = makeItem();
    SingletonPointer<RegisterableSingleton> pointer("test", item);

    EXPECT_EQ(pointer.operator->(), item->getRegisterable().get());
}

TEST(SingletonPointerTest, DoesNotKeepTheSingletonAlive) {
    auto item = makeItem();
    const std::weak_ptr<SRegisterItem> observed = item;
    SingletonPointer<Base> pointer("test", item);
    EXPECT_EQ(pointer->answer(), 42);

    EXPECT_EQ(observed.use_count(), 1);
}

TEST(SingletonPointerTest, IsAUserForAsLongAsItLives) {
    const auto item = makeItem();
    { const SingletonPointer<Base> pointer("test", item); }

    EXPECT_ASSERTION_MSG(item->decrementUsage("test"), "false",
                         "User 'test' is not registered as user of this singleton (DUMMY_SINGLETON=DUMMY_SINGLETON)");
}

TEST(SingletonPointerTest, MayHaveTheNameOfAnotherOne) {
    auto item = makeItem();
    {
        const SingletonPointer<Base> first("test", item);
        { const SingletonPointer<Base> second("test", item); }
        EXPECT_ASSERTION_MSG(item.reset(), "false",
                             "Singleton (DUMMY_SINGLETON=DUMMY_SINGLETON) is still used by: [test]");
    }
    item.reset();
}

// The only way in which a pointer may outlive its singleton: it does not exist at the moment when the singleton is
// destroyed.
TEST(SingletonPointerTest, MayOutliveItsSingletonWhenItIsNotUsed) {
    auto item = makeItem();
    auto pointer = std::make_unique<SingletonPointer<Base>>("test", item);
    item->decrementUsage("test");
    item.reset();

    EXPECT_ASSERTION_MSG((*pointer)->answer(), "0", GONE);
    pointer.reset();
}

TEST(SingletonPointerTest, RefusesASingletonOfAnotherType) {
    const auto item = makeItem();
    SingletonPointer<Dependent> pointer("test", item);

    EXPECT_ASSERTION_MSG(pointer->answer(), "0",
                         "It should never happen! Is was checked in getService, but Singleton's type probably doesn't "
                         "match with it's id");
}

TEST(SingletonPointerTest, EndsTheProcessWhenItsSingletonIsDeletedBeforeIt) {
    EXPECT_ASSERTION_MSG(
        {
            mark<Base>();
            const SingletonPointer<Base> first = service<Base>("first user");
            const SingletonPointer<Base> second = service<Base>("second user");
            unmark<Base>();
        },
        "false", "Singleton (DUMMY_SINGLETON=DUMMY_SINGLETON) is still used by: [first user] [second user]");
}

TEST(SingletonPointerTest, MayOutliveOneOfTwoNeeds) {
    const SingletonServiceGuard<Base> guard;
    mark<Base>();
    SingletonPointer<Base> pointer = service<Base>("test");
    unmark<Base>();

    EXPECT_EQ(pointer->answer(), 42);
}

} // namespace
} // namespace DAX::Tests
