#include <memory>

#include "DlogHook.h"
#include "UserDataFixture.h"
#include "support/Event.h"
#include "support/OtherThread.h"
#include "support/ProcessDeath.h"

namespace DAX::Tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class UserDataLockTest : public UserDataFixture {
protected:
    using Lock = UserDataRegister::UserDataLock;

    int data = 0;
    void* const first = registerData(&data);

    void TearDown() override {
        FakeKovan::forgetRecords();
        unregister(first);
    }
};

TEST_F(UserDataLockTest, IsValidForAnIdThatIsRegistered) {
    const Lock lock(first);
    EXPECT_TRUE(static_cast<bool>(lock));
    EXPECT_EQ(lock.getData(), &data);
    EXPECT_THAT(FakeKovan::logLines(), IsEmpty());
}

TEST_F(UserDataLockTest, IsInvalidForAnIdThatHasNeverBeenRegistered) {
    const Lock lock(id(2));
    EXPECT_FALSE(static_cast<bool>(lock));
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log WRN The callback is not registered or removed. ID:  0x2"));
}

TEST_F(UserDataLockTest, IsInvalidForAnIdThatHasBeenUnregistered) {
    void* const second = registerData(&data);
    unregister(second);
    EXPECT_FALSE(static_cast<bool>(Lock(second)));
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log WRN The callback is not registered or removed. ID:  0x2"));
}

TEST_F(UserDataLockTest, IsInvalidForTheNullId) {
    EXPECT_FALSE(static_cast<bool>(Lock(nullptr)));
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log WRN The callback is not registered or removed. ID:  [nullptr]"));
}

TEST_F(UserDataLockTest, ChecksTheThread) {
    void* const second = registerData(&data, NOT_ANY_THREAD);
    EXPECT_ASSERTION_MSG(Lock{second}, "0", wrongThread(NOT_ANY_THREAD));
    unregister(second);
}

TEST_F(UserDataLockTest, NeedsTheRegister) {
    EXPECT_ASSERTION_MSG(
        {
            unregister(first);
            unmark<UserDataRegister>();
            Lock{first};
        },
        "0", "Singleton USER_DATA_REGISTER does not exist.");
}

TEST_F(UserDataLockTest, UsesTheRegisterUnderItsOwnName) {
    EXPECT_ASSERTION_MSG(
        {
            onLogLine("The callback is not registered or removed.", unmark<UserDataRegister>);
            Lock{id(2)};
        },
        "false", "Singleton (USER_DATA_REGISTER=USER_DATA_REGISTER) is still used by: [UserDataLock]");
}

TEST_F(UserDataLockTest, KeepsOthersOutForAsLongAsItLives) {
    auto lock = std::make_unique<Lock>(first);
    OtherThread other([this] { const Lock second(first); });
    EXPECT_TRUE(other.waitUntilItWaits());

    lock.reset();

    other.finish();
}

TEST_F(UserDataLockTest, KeepsNobodyFromOtherIds) {
    const Lock lock(first);
    OtherThread([this] {
        void* const second = registerData(&data);
        EXPECT_TRUE(static_cast<bool>(Lock(second)));
        unregister(second);
    }).finish();
}

TEST_F(UserDataLockTest, KeepsTheDataFromBeingTakenAwayByAnotherThread) {
    void* const second = registerData(&data);
    auto lock = std::make_unique<Lock>(second);
    OtherThread other([second] { unregister(second); });
    EXPECT_TRUE(other.waitUntilItWaits());
    EXPECT_EQ(lock->getData(), &data);
    EXPECT_FALSE(static_cast<bool>(Lock(second))) << "no other may begin meanwhile, nor wait";

    lock.reset();

    other.finish();
}

TEST_F(UserDataLockTest, LetsItsOwnThreadUnregisterTheId) {
    void* const second = registerData(&data);
    const Lock lock(second);
    unregister(second);
    EXPECT_FALSE(static_cast<bool>(Lock(second)));
}

TEST_F(UserDataLockTest, LetsItsOwnThreadUnregisterEachIdThatItHolds) {
    void* const second = registerData(&data);
    void* const third = registerData(&data);
    auto locksSecond = std::make_unique<Lock>(second);
    auto locksThird = std::make_unique<Lock>(third);
    locksSecond.reset(); // not the one that was made last
    unregister(third);
    locksThird.reset();
    unregister(second);
    EXPECT_THAT(FakeKovan::logLines(), IsEmpty());
}

// The id is unregistered while a thread has found it and waits for its data.
TEST_F(UserDataLockTest, IsInvalidWhenTheIdIsUnregisteredBetweenItsTwoLocks) {
    void* const second = registerData(&data);
    auto lock = std::make_unique<Lock>(second);
    OtherThread other([second] { EXPECT_FALSE(static_cast<bool>(Lock(second))); });
    ASSERT_TRUE(other.waitUntilItWaits());
    unregister(second);
    EXPECT_THAT(FakeKovan::logLines(), IsEmpty());

    lock.reset();

    other.finish();
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log WRN The callback is unregistered. ID:  0x2This will happen only if the callback is "
                            "unregistered between unlocking 'user data map mutex' and locking 'data mutex'."));
}

} // namespace
} // namespace DAX::Tests
