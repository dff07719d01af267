#include "Utility/Utils/SingletonServiceGuard.h"

#include <stdexcept>
#include <type_traits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TestSingletons.h"
#include "support/ProcessDeath.h"

namespace DAX::Tests {
namespace {

using namespace Common::Utils;
using testing::ElementsAre;

static_assert(!std::is_copy_constructible<SingletonServiceGuard<Base>>::value, "it is one need, no more");
static_assert(!std::is_default_constructible<Base>::value, "only the default factory makes one");

TEST(SingletonServiceGuardTest, KeepsTheSingletonAliveForAsLongAsItLives) {
    {
        const SingletonServiceGuard<Base> guard;
        EXPECT_EQ(service<Base>("test")->answer(), 42);
        EXPECT_THAT(FakeKovan::journal("destroy"), ElementsAre());
    }
    EXPECT_THAT(FakeKovan::journal("destroy"), ElementsAre("destroy DUMMY_SINGLETON"));
}

TEST(SingletonServiceGuardTest, MarksAndUnmarksOnce) {
    { const SingletonServiceGuard<Base> guard; }
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log INF Needed: singleton id: DUMMY_SINGLETON",
                            "log INF Creating : singleton id: DUMMY_SINGLETON", "construct DUMMY_SINGLETON",
                            "log INF Unmarking needed: singleton id: DUMMY_SINGLETON",
                            "log INF Singleton: DUMMY_SINGLETON will be deleted.", "destroy DUMMY_SINGLETON"));
}

TEST(SingletonServiceGuardTest, TakesAFactoryOfItsOwn) {
    struct Special : Base {
        static std::shared_ptr<RegisterableSingleton> create() {
            FakeKovan::note("create");
            return SingletonsRegister::defaultFactory<Special>();
        }
    };
    const SingletonServiceGuard<Special> guard(Special::create);
    EXPECT_EQ(FakeKovan::journal("create").size(), 1u);
}

TEST(SingletonServiceGuardTest, SharesTheSingletonWithAnotherGuard) {
    const SingletonServiceGuard<Base> first;
    { const SingletonServiceGuard<Base> second; }
    EXPECT_EQ(service<Base>("test")->answer(), 42);
}

TEST(SingletonServiceGuardTest, WithdrawsNoNeedThatItCouldNotMark) {
    const SingletonServiceGuard<Base> base;
    const auto broken = []() -> std::shared_ptr<RegisterableSingleton> { throw std::domain_error("broken"); };
    FakeKovan::forgetRecords();
    EXPECT_THROW(SingletonServiceGuard<Dependent>{broken}, std::domain_error);
    EXPECT_EQ(FakeKovan::countContaining("INF", "Unmarking"), 0);
}

TEST(SingletonServiceGuardTest, NeedsAGuardOnWhatTheSingletonRequires) {
    EXPECT_ASSERTION_MSG({ const SingletonServiceGuard<Dependent> guard; }, "0",
                         "Cannot meet requirements of given singleton. Cannot find singletons required by given "
                         "singleton.");
}

} // namespace
} // namespace DAX::Tests
