#include "Utility/Utils/UserDataRegister.h"

#include <memory>
#include <set>
#include <vector>

#include "UserDataFixture.h"
#include "support/OtherThread.h"
#include "support/ProcessDeath.h"

namespace DAX::Tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class UserDataRegisterTest : public UserDataFixture {
protected:
    int data = 0;
};

// A register that has already issued many ids.
struct OldRegister : Common::Utils::UserDataRegister {
    explicit OldRegister(int lastId) : UserDataRegister(lastId) {}
};

const char LIMIT[] = "m_id < std::numeric_limits<decltype(m_id)>::max()";

TEST_F(UserDataRegisterTest, HasItsIdAndRequiresNothing) {
    EXPECT_EQ(UserDataRegister::getID(), Common::Utils::USER_DATA_REGISTER);
    EXPECT_THAT(UserDataRegister::getRequirements(), IsEmpty());
}

TEST_F(UserDataRegisterTest, CountsTheIdsFromOne) {
    EXPECT_EQ(registerData(&data), id(1));
    EXPECT_EQ(registerData(&data), id(2)) << "for the same data";
    EXPECT_EQ(registerData(nullptr), id(3));
    for (const int number : {1, 2, 3}) {
        unregister(id(number));
    }
}

TEST_F(UserDataRegisterTest, GivesNoIdTwice) {
    unregister(registerData(&data));
    EXPECT_EQ(registerData(&data), id(2));
    unregister(id(2));
}

TEST_F(UserDataRegisterTest, LogsNothingWhenAllIsWell) {
    unregister(registerData(&data));
    unregister(registerData(&data, NOT_ANY_THREAD));
    unregister(registerData(&data, boost::this_thread::get_id()));
    EXPECT_THAT(FakeKovan::logLines(), IsEmpty());
}

TEST_F(UserDataRegisterTest, LogsAnIdThatHasNeverBeenRegistered) {
    unregister(id(26));
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log ERR The callback has been already unregistered or it has never "
                                                  "been registered. Id: 0x1a"));
}

TEST_F(UserDataRegisterTest, LogsAnIdThatHasBeenUnregistered) {
    unregister(registerData(&data));
    unregister(id(1));
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log ERR The callback has been already unregistered or it has never "
                                                  "been registered. Id: 0x1"));
}

TEST_F(UserDataRegisterTest, LogsTheNullId) {
    unregister(nullptr);
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log ERR The callback has been already unregistered or it has never "
                                                  "been registered. Id: [nullptr]"));
}

TEST_F(UserDataRegisterTest, GivesIdsUpToTheLargest) {
    OldRegister old(2147483645);
    EXPECT_EQ(old.registerUserData(&data, boost::none), id(2147483646));
    EXPECT_EQ(old.registerUserData(&data, boost::none), id(2147483647));
    old.unregisterUserData(id(2147483646));
    old.unregisterUserData(id(2147483647));
}

TEST_F(UserDataRegisterTest, EndsTheProcessAfterTheLargestId) {
    OldRegister old(2147483646);
    old.unregisterUserData(old.registerUserData(&data, boost::none));
    EXPECT_ASSERTION_WITHOUT_MSG(old.registerUserData(&data, boost::none), LIMIT);
}

TEST_F(UserDataRegisterTest, MayNotEndWithARegistration) {
    EXPECT_ASSERTION_MSG(OldRegister(0).registerUserData(&data, boost::none), "0",
                         "There are some unregistered callbacks!");
}

TEST_F(UserDataRegisterTest, MayNotBeDestroyedByItsGuardWithARegistration) {
    EXPECT_ASSERTION_MSG(
        {
            registerData(&data);
            unmark<UserDataRegister>();
        },
        "0", "There are some unregistered callbacks!");
}

TEST_F(UserDataRegisterTest, CountsFromOneAgainInANewRegister) {
    unregister(registerData(&data));
    unmark<UserDataRegister>();
    mark<UserDataRegister>();
    EXPECT_EQ(registerData(&data), id(1));
    unregister(id(1));
}

TEST_F(UserDataRegisterTest, GivesEachThreadIdsOfItsOwn) {
    const int THREADS = 4;
    const int ROUNDS = 200;
    std::vector<std::vector<void*>> ids(THREADS);
    {
        std::vector<std::unique_ptr<OtherThread>> threads;
        for (std::vector<void*>& mine : ids) {
            threads.push_back(std::make_unique<OtherThread>([this, &mine] {
                for (int i = 0; i < ROUNDS; ++i) {
                    mine.push_back(registerData(&data));
                    unregister(mine.back());
                }
            }));
        }
    }
    std::set<void*> all;
    for (const std::vector<void*>& mine : ids) {
        all.insert(mine.begin(), mine.end());
    }
    EXPECT_EQ(all.size(), static_cast<size_t>(THREADS * ROUNDS));
    EXPECT_EQ(*all.begin(), id(1));
    EXPECT_EQ(*all.rbegin(), id(THREADS * ROUNDS));
}

} // namespace
} // namespace DAX::Tests
