#include "Utility/Utils/UserDataItem.h"

#include <gtest/gtest.h>

#include "UserDataFixture.h"
#include "support/OtherThread.h"
#include "support/ProcessDeath.h"

namespace DAX::Tests {
namespace {

using Common::Utils::UserDataItem;

class UserDataItemTest : public UserDataFixture {
protected:
    int data = 0;
};

TEST_F(UserDataItemTest, HasItsData) {
    UserDataItem item(&data, boost::none);
    EXPECT_EQ(item.getData(), boost::optional<void*>(&data));
}

TEST_F(UserDataItemTest, MayHoldANullPointer) {
    UserDataItem item(nullptr, boost::none);
    EXPECT_EQ(item.getData(), boost::optional<void*>(nullptr));
}

TEST_F(UserDataItemTest, HasNoDataAfterItsRemoval) {
    UserDataItem item(&data, boost::none);
    item.removeData();
    EXPECT_EQ(item.getData(), boost::none);
}

TEST_F(UserDataItemTest, IsReachedByAnyThreadWhenNoneIsExpected) {
    UserDataItem item(&data, boost::none);
    OtherThread other([&] { EXPECT_EQ(item.getData(), boost::optional<void*>(&data)); });
}

TEST_F(UserDataItemTest, IsReachedByTheExpectedThread) {
    UserDataItem item(&data, boost::this_thread::get_id());
    EXPECT_EQ(item.getData(), boost::optional<void*>(&data));
}

TEST_F(UserDataItemTest, IsNotReachedByAnotherThread) {
    boost::thread other([] {});
    const boost::thread::id otherId = other.get_id();
    other.join();
    UserDataItem item(&data, otherId);
    EXPECT_ASSERTION_MSG(item.getData(), "0", wrongThread(otherId));
}

TEST_F(UserDataItemTest, IsReachedByNoThreadWhenTheExpectedOneIsNotAThread) {
    UserDataItem item(&data, NOT_ANY_THREAD);
    EXPECT_THAT(wrongThread(NOT_ANY_THREAD), testing::EndsWith(", while expected Id is: {Not-any-thread}"));
    EXPECT_ASSERTION_MSG(item.getData(), "0", wrongThread(NOT_ANY_THREAD));
}

TEST_F(UserDataItemTest, ChecksTheThreadOfDataThatWasRemoved) {
    UserDataItem item(&data, NOT_ANY_THREAD);
    item.removeData();
    EXPECT_ASSERTION_MSG(item.getData(), "0", wrongThread(NOT_ANY_THREAD));
}

TEST_F(UserDataItemTest, IsReachedByAnyThreadInProduction) {
    FakeKovan::setProduction(true);
    UserDataItem item(&data, NOT_ANY_THREAD);
    EXPECT_EQ(item.getData(), boost::optional<void*>(&data));
}

} // namespace
} // namespace DAX::Tests
