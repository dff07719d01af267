#include "DAXCommon/UserInterestExceptions.h"
#include "ManagerFixture.h"
#include "Platform/SystemAPI/VconfSystemAPI/VConfException.h"
#include "support/ProcessDeath.h"
#include "support/Thrown.h"

namespace DAX::Tests {
namespace {

using Service::ExternalLockId;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using UserInterestExceptions::ExternalLockDenied;

// Identifiers are counted for the whole process, so a test looks at their differences, or starts a process.
class ExternalLocksTest : public ManagerFixture {
protected:
    ExternalLockId acquire(const std::string& client, int priority) {
        return manager->acquireExternalLock(client, rank(priority));
    }
    void release(const std::string& client, ExternalLockId id) { manager->releaseExternalLock(client, id); }

    std::string line(const std::string& before, ExternalLockId id, const std::string& behind) {
        return before + std::to_string(id) + behind;
    }
};

TEST_F(ExternalLocksTest, TheFirstIdentifierOfAProcessIsOne) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_IN_CHILD(EXPECT_EQ(acquire("app", 1), 1U); EXPECT_EQ(acquire("app", 1), 2U));
}

TEST_F(ExternalLocksTest, ADeniedAttemptConsumesAnIdentifier) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_IN_CHILD(auto owner = getService(3, "owner"); EXPECT_THROW(acquire("app", 3), ExternalLockDenied);
                    owner.reset(); EXPECT_EQ(acquire("app", 3), 2U));
}

TEST_F(ExternalLocksTest, IdentifiersGoOnInAnotherManagerOfTheProcess) {
    const ExternalLockId first = acquire("app", 1);
    manager.reset();
    start();
    EXPECT_EQ(acquire("app", 1), first + 1);
}

TEST_F(ExternalLocksTest, WithoutASessionOnlyTheLockIsLogged) {
    const ExternalLockId id = acquire("holder", 3);
    EXPECT_THAT(journal(), ElementsAre(line("log INF External lock ", id, " is acquired by holder")));
    EXPECT_EQ(owner(), "<none>");
}

TEST_F(ExternalLocksTest, AHigherPriorityInvalidatesTheSessionAndForgetsIt) {
    const auto service = getService(3, "app");
    const auto transaction = service->startNewTransaction(DAXCommon::OTN);
    forget();
    const ExternalLockId id = acquire("holder", 4);
    const std::string reason =
        "Invalidating CService - reason: Invalidating service because external lock was acquired: holder";
    EXPECT_THAT(journal(),
                ElementsAre(line("log INF External lock ", id,
                                 " is acquired by holder. Current service, belonging to app, will be invalidated."),
                            "log INF cancelServiceTransaction() reason: " + reason,
                            "core cancelCoreTransaction(cancelServiceTransaction() is canceling CoreTransaction. "
                            "Reason: " +
                                reason + ")",
                            "log INF Reset done.", "log INF Invalidate done.", write(LOCK_KEY, 1)));
    EXPECT_FALSE(service->startNewTransaction(DAXCommon::OTN));
    EXPECT_EQ(owner(), "<none>");
}

class DeniedLock : public ExternalLocksTest, public ::testing::WithParamInterface<int> {};

TEST_P(DeniedLock, LeavesTheSessionAndTheTableAsTheyWere) {
    const auto service = getService(5, "app");
    forget();
    EXPECT_THROW(acquire("holder", GetParam()), ExternalLockDenied);
    EXPECT_THAT(journal(), IsEmpty());
    EXPECT_EQ(owner(), "app");
    EXPECT_TRUE(service->startNewTransaction(DAXCommon::OTN));
    manager->getService(rank(-100), "late", purpose(0));
    EXPECT_EQ(FakeKovan::countContaining("INF", "External lock is acquired by:"), 0);
}

INSTANTIATE_TEST_SUITE_P(EqualAndLowerPriorities, DeniedLock, ::testing::Values(5, 4, -1));

TEST_F(ExternalLocksTest, OfPriorityFourSetsTheKey) {
    const ExternalLockId id = acquire("holder", 4);
    EXPECT_THAT(journal(),
                ElementsAre(line("log INF External lock ", id, " is acquired by holder"), write(LOCK_KEY, 1)));
}

TEST_F(ExternalLocksTest, OfPriorityThreeLeavesTheKeyAlone) {
    acquire("holder", 3);
    EXPECT_EQ(FakeKovan::setting(LOCK_KEY), std::nullopt);
}

TEST_F(ExternalLocksTest, AFailedWriteOfTheKeyIsThrownAfterTheLockWasTaken) {
    FakeKovan::failWrites(LOCK_KEY, -7);
    EXPECT_THROW(acquire("holder", 4), Platform::VConfException);
    EXPECT_FALSE(getService(4, "app"));
    EXPECT_EQ(journal().back(),
              "log INF External lock is acquired by:  holder. There is no possibility to get service.");
}

TEST_F(ExternalLocksTest, OneClientMayHoldSeveral) {
    const ExternalLockId first = acquire("holder", 3);
    const ExternalLockId second = acquire("holder", 3);
    EXPECT_EQ(second, first + 1);
    release("holder", first);
    EXPECT_FALSE(getService(3, "app"));
    release("holder", second);
    EXPECT_TRUE(getService(3, "app"));
}

TEST_F(ExternalLocksTest, OutliveTheSessionsBesideThem) {
    acquire("holder", 3);
    getService(4, "app").reset();
    EXPECT_FALSE(getService(3, "app"));
}

TEST_F(ExternalLocksTest, ReleasingTheLastBlockingOneClearsTheKeyThoughALesserOneRemains) {
    acquire("lesser", 3);
    const ExternalLockId id = acquire("holder", 4);
    forget();
    release("holder", id);
    EXPECT_THAT(journal(),
                ElementsAre(line("log INF External lock ", id, " is being released by holder"),
                            "log INF No external locks that block MainApp are locked any more.", write(LOCK_KEY, 0)));
    EXPECT_FALSE(getService(3, "app"));
}

TEST_F(ExternalLocksTest, ReleasingOneLeavesTheKeyWhileAnotherBlocks) {
    acquire("other", 4);
    const ExternalLockId id = acquire("holder", 9);
    forget();
    release("holder", id);
    EXPECT_THAT(journal(), ElementsAre(line("log INF External lock ", id, " is being released by holder")));
    EXPECT_EQ(FakeKovan::setting(LOCK_KEY), FakeKovan::Value(1));
}

TEST_F(ExternalLocksTest, ReleasingALesserOneAloneClearsTheKeyToo) {
    const ExternalLockId id = acquire("holder", 3);
    release("holder", id);
    EXPECT_EQ(FakeKovan::setting(LOCK_KEY), FakeKovan::Value(0));
}

TEST_F(ExternalLocksTest, AFailedClearingOfTheKeyIsThrownAfterTheLockWasReleased) {
    const ExternalLockId id = acquire("holder", 4);
    FakeKovan::failWrites(LOCK_KEY, -7);
    EXPECT_THROW(release("holder", id), Platform::VConfException);
    EXPECT_TRUE(getService(4, "app"));
}

TEST_F(ExternalLocksTest, ReleasingAnUnknownOneFails) {
    const ExternalLockId id = acquire("holder", 4) + 1000;
    forget();
    EXPECT_EQ(thrownDescription([&] { release("holder", id); }), "Invalid externalLockId.");
    EXPECT_THAT(journal(),
                ElementsAre(line("log ERR Client holder is releasing a non-existent external lock ", id, "")));
}

TEST_F(ExternalLocksTest, ReleasingOneTwiceFailsTheSecondTime) {
    const ExternalLockId id = acquire("holder", 1);
    release("holder", id);
    EXPECT_EQ(thrownDescription([&] { release("holder", id); }), "Invalid externalLockId.");
}

TEST_F(ExternalLocksTest, ReleasingOneOfAnotherClientFailsAndKeepsIt) {
    const ExternalLockId id = acquire("holder", 4);
    forget();
    EXPECT_EQ(thrownDescription([&] { release("thief", id); }), "External lock owned by other client.");
    EXPECT_THAT(journal(), ElementsAre(line("log ERR Client thief is releasing external lock ", id,
                                            " that belongs to client holder")));
    EXPECT_FALSE(getService(4, "app"));
}

} // namespace
} // namespace DAX::Tests
