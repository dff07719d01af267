#include "Service/ServiceManager/Implementation/CService.h"

#include "DAXCommon/UserInterestExceptions.h"
#include "ServiceFixture.h"
#include "support/Thrown.h"

namespace DAX::Tests {
namespace {

using Service::ServiceManager::CService;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;
using UserInterestExceptions::CNetworkTransferError;
using UserInterestExceptions::TransactionInvalidatedException;

const char UPGRADED_KEY[] = "db/menu/support/softwareupdate/was_successfull_upgrade";
const char CELLULAR_KEY[] = "db/menu/support/softwareupdate/use_cellular_int";
const char CANCEL_TO_CREATE[] =
    "There already is an active ServiceTransaction. Canceling it to create new ServiceTransaction.";

class CServiceTest : public ServiceFixture {
protected:
    CServiceTest() {
        FakeKovan::setSetting(UPGRADED_KEY, 0);
        FakeKovan::setSetting(CELLULAR_KEY, 0);
    }

    std::unique_ptr<CService> makeService(int priority = 3, const std::string& client = "app", int type = 7) {
        auto service = std::make_unique<CService>(core, rank(priority), client, purpose(type));
        forget();
        return service;
    }

    // The core's call for a cancellation with this reason, and the log line before it.
    static std::string cancelLine(const std::string& reason) {
        return "core cancelCoreTransaction(cancelServiceTransaction() is canceling CoreTransaction. Reason: " + reason +
               ")";
    }
    static std::string reasonLine(const std::string& reason) {
        return "log INF cancelServiceTransaction() reason: " + reason;
    }
};

TEST_F(CServiceTest, KeepsWhoAskedAndForWhat) {
    const auto service = makeService(3, "app", 7);
    EXPECT_EQ(service->getClientPriority(), 3);
    EXPECT_EQ(service->clientName(), "app");
    EXPECT_EQ(service->transactionType(), 7);
}

TEST_F(CServiceTest, TheSettingsKeyHoldsThePriorityWhileTheSessionLivesAndMinusOneAfterIt) {
    auto service = makeService(3);
    EXPECT_EQ(FakeKovan::setting(PRIORITY_KEY), FakeKovan::Value(3));
    service.reset();
    EXPECT_EQ(FakeKovan::setting(PRIORITY_KEY), FakeKovan::Value(-1));
}

TEST_F(CServiceTest, AFailedWriteOfThePriorityIsLoggedAndTheSessionUsable) {
    FakeKovan::failWrites(PRIORITY_KEY, -7);
    CService service(core, rank(3), "app", purpose(7));
    EXPECT_THAT(logged("ERR"), AllOf(StartsWith("Error occurred while accessing to IVConf "
                                                "CurrentServiceClientPriorityKey: "),
                                     HasSubstr("Dynamic exception type"), HasSubstr(PRIORITY_KEY)));
    EXPECT_TRUE(service.startNewTransaction(DAXCommon::OTN));
}

TEST_F(CServiceTest, WithoutATransactionSaysSoAndCreatesOne) {
    const auto service = makeService();
    EXPECT_TRUE(service->startNewTransaction(DAXCommon::OTN));
    EXPECT_THAT(journal(),
                ElementsAre("log DBG Success getting info about successful upgrade from vconf. Returned value: 0",
                            "log INF Successful upgrade has not occurred since the last factory reset.",
                            "log INF Transaction does not exist. Nothing to do.", "core getCurrentVersion()",
                            "core createTransaction(upgradeType 2, transactionType 7, cellular 0, upgraded 0)"));
}

TEST_F(CServiceTest, ReadsTheUpgradeFlagBeforeTheCellularFlag) {
    const auto service = makeService();
    service->startNewTransaction(DAXCommon::OTN);
    EXPECT_THAT(FakeKovan::reads(), ElementsAre(UPGRADED_KEY, CELLULAR_KEY));
}

TEST_F(CServiceTest, TellsTheCoreTheTypesAndTheFlags) {
    FakeKovan::setSetting(CELLULAR_KEY, 1);
    makeService(3, "app", 2)->startNewTransaction(DAXCommon::USB);
    EXPECT_EQ(script->calls()[1], "createTransaction(upgradeType 3, transactionType 2, cellular 1, upgraded 0)");
    FakeKovan::setSetting(CELLULAR_KEY, 0);
    FakeKovan::setSetting(UPGRADED_KEY, 1);
    script->takeCalls();
    makeService(3, "app", -1)->startNewTransaction(DAXCommon::UpgradeType(99));
    EXPECT_EQ(script->calls()[1], "createTransaction(upgradeType 99, transactionType -1, cellular 0, upgraded 1)");
}

TEST_F(CServiceTest, CancelsTheEarlierTransactionBeforeItCreatesTheNext) {
    const auto service = makeService();
    const auto first = service->startNewTransaction(DAXCommon::OTN);
    forget();
    const auto second = service->startNewTransaction(DAXCommon::USB);
    EXPECT_NE(first, second);
    EXPECT_THAT(journal(),
                ElementsAre(StartsWith("log DBG "), StartsWith("log INF Successful upgrade"),
                            reasonLine(CANCEL_TO_CREATE), cancelLine(CANCEL_TO_CREATE), "log INF Reset done.",
                            "core getCurrentVersion()",
                            "core createTransaction(upgradeType 3, transactionType 7, cellular 0, upgraded 0)"));
}

TEST_F(CServiceTest, ATransactionThatTheCoreInvalidatedNeedsNoCancelling) {
    const auto service = makeService();
    service->startNewTransaction(DAXCommon::OTN);
    script->fail("cancelCoreTransaction", TransactionInvalidatedException());
    forget();
    service->invalidate("told so");
    const std::string reason = "Invalidating CService - reason: told so";
    EXPECT_THAT(journal(), ElementsAre(reasonLine(reason), cancelLine(reason),
                                       "log INF Transaction was invalidated. Nothing to do.", "log INF Reset done.",
                                       "log INF Invalidate done."));
}

TEST_F(CServiceTest, AFailedCancellationIsLoggedAndTheTransactionDropped) {
    const auto service = makeService();
    service->startNewTransaction(DAXCommon::OTN);
    script->fail("cancelCoreTransaction", CNetworkTransferError());
    forget();
    EXPECT_NO_THROW(service->invalidate("told so"));
    const std::string reason = "Invalidating CService - reason: told so";
    EXPECT_THAT(journal(),
                ElementsAre(reasonLine(reason), cancelLine(reason),
                            AllOf(StartsWith("log ERR Unable to stop ServiceTransaction. Resetting transaction anyway. "
                                             "There's nothing else we can do. Exception: "),
                                  HasSubstr("CNetworkTransferError")),
                            "log INF Reset done.", "log INF Invalidate done."));
    EXPECT_EQ(script->liveTransactions(), 0);
}

TEST_F(CServiceTest, AFailedCancellationDoesNotStopTheNextTransaction) {
    const auto service = makeService();
    service->startNewTransaction(DAXCommon::OTN);
    script->fail("cancelCoreTransaction", CNetworkTransferError());
    EXPECT_TRUE(service->startNewTransaction(DAXCommon::OTN));
}

class FailingCreation : public CServiceTest, public ::testing::WithParamInterface<const char*> {};

TEST_P(FailingCreation, LeavesTheSessionValidWithNoTransaction) {
    const auto service = makeService();
    service->startNewTransaction(DAXCommon::OTN);
    script->fail(GetParam(), CNetworkTransferError());
    EXPECT_THROW(service->startNewTransaction(DAXCommon::OTN), CNetworkTransferError);
    EXPECT_EQ(script->liveTransactions(), 0);
    script->mend(GetParam());
    forget();
    EXPECT_TRUE(service->startNewTransaction(DAXCommon::OTN));
    EXPECT_EQ(journal()[2], "log INF Transaction does not exist. Nothing to do.");
}

INSTANTIATE_TEST_SUITE_P(AtEitherStep, FailingCreation, ::testing::Values("getCurrentVersion", "createTransaction"));

TEST_F(CServiceTest, ARefusalOfTheCoreIsAFailureThatLeavesTheSessionValid) {
    const auto service = makeService();
    script->refusesTransactions = true;
    EXPECT_EQ(thrownDescription([&] { service->startNewTransaction(DAXCommon::OTN); }),
              "Core refused to create a transaction.");
    script->refusesTransactions = false;
    EXPECT_TRUE(service->startNewTransaction(DAXCommon::OTN));
}

TEST_F(CServiceTest, InvalidateTellsTheCoreTheReasonWithBothPrefixes) {
    const auto service = makeService();
    service->startNewTransaction(DAXCommon::OTN);
    script->takeCalls();
    service->invalidate("Invalidating Service, because ServiceManager client disconnected: app");
    EXPECT_THAT(script->calls(),
                ElementsAre("cancelCoreTransaction(cancelServiceTransaction() is canceling CoreTransaction. Reason: "
                            "Invalidating CService - reason: Invalidating Service, because ServiceManager client "
                            "disconnected: app)"));
}

TEST_F(CServiceTest, InvalidateWithoutATransactionSaysSo) {
    const auto service = makeService();
    service->invalidate("told so");
    EXPECT_THAT(journal(),
                ElementsAre("log INF Transaction does not exist. Nothing to do.", "log INF Invalidate done."));
}

TEST_F(CServiceTest, InvalidatingTwiceIsDoneOnce) {
    const auto service = makeService();
    service->startNewTransaction(DAXCommon::OTN);
    service->invalidate("first");
    forget();
    service->invalidate("second");
    EXPECT_THAT(journal(), IsEmpty());
    EXPECT_EQ(FakeKovan::count("INF", "Invalidate done."), 1);
}

TEST_F(CServiceTest, AnInvalidSessionGivesNoTransactionAndAsksNobody) {
    const auto service = makeService();
    service->invalidate("told so");
    forget();
    EXPECT_FALSE(service->startNewTransaction(DAXCommon::OTN));
    EXPECT_THAT(journal(), IsEmpty());
    EXPECT_THAT(FakeKovan::reads(), IsEmpty());
    EXPECT_THAT(script->calls(), IsEmpty());
}

TEST_F(CServiceTest, AnInvalidSessionStillTellsItsPriority) {
    const auto service = makeService(3);
    service->invalidate("told so");
    EXPECT_EQ(service->getClientPriority(), 3);
    EXPECT_EQ(FakeKovan::setting(PRIORITY_KEY), FakeKovan::Value(3));
}

TEST_F(CServiceTest, ItsEndCancelsTheTransactionAndThenResetsTheKey) {
    auto service = makeService();
    service->startNewTransaction(DAXCommon::OTN);
    forget();
    service.reset();
    const std::string reason = "Stopping ServiceTransaction in CService destructor.";
    EXPECT_THAT(journal(),
                ElementsAre(reasonLine(reason), cancelLine(reason), "log INF Reset done.", write(PRIORITY_KEY, -1)));
}

TEST_F(CServiceTest, ItsEndAfterInvalidationHasNothingToCancel) {
    auto service = makeService();
    service->startNewTransaction(DAXCommon::OTN);
    service->invalidate("told so");
    forget();
    service.reset();
    EXPECT_THAT(journal(), ElementsAre("log INF Transaction does not exist. Nothing to do.", write(PRIORITY_KEY, -1)));
}

TEST_F(CServiceTest, ItsEndSurvivesAFailedCancellation) {
    auto service = makeService();
    service->startNewTransaction(DAXCommon::OTN);
    script->fail("cancelCoreTransaction", std::runtime_error("no core"));
    service.reset();
    EXPECT_EQ(journal().back(), write(PRIORITY_KEY, -1));
}

TEST_F(CServiceTest, ItsEndLogsAFailedResetOfTheKey) {
    auto service = makeService();
    FakeKovan::failWrites(PRIORITY_KEY, -7);
    service.reset();
    EXPECT_THAT(logged("FTL"), AllOf(StartsWith("Exception caught while resetting VConf key in ~CService: "),
                                     HasSubstr("Dynamic exception type"), HasSubstr(PRIORITY_KEY)));
}

TEST_F(CServiceTest, ItsEndLeavesTheTransactionToWhoeverStillHoldsIt) {
    auto service = makeService();
    auto transaction = service->startNewTransaction(DAXCommon::OTN);
    service.reset();
    EXPECT_EQ(transaction.use_count(), 1);
    transaction.reset();
    EXPECT_EQ(script->liveTransactions(), 0);
}

} // namespace
} // namespace DAX::Tests
