#include "daxctl/UpgradeRun.h"

#include <csignal>
#include <stdexcept>
#include <thread>

#include <boost/optional/optional_io.hpp>
#include <gmock/gmock.h>
#include <nlohmann/json.hpp>
#include <unistd.h>

#include "DAXIPC/DBUSLowLevel/Adapters/DAXServiceAdapter/DAXIPCServiceManagerAdapter.h"
#include "clients/daxctl/StandardError.h"
#include "daxctl/Obstacles.h"
#include "src/DAXIPC/DBUSLowLevel/Adapters/DAXServiceAdapter/MockService.h"
#include "support/FakeKovan.h"
#include "support/PrivateBus.h"
#include "support/RawPeer.h"
#include "support/TemporaryRoot.h"

namespace DAX::Tests {
namespace {

using namespace testing;
using namespace Service;
using DAXCommon::ServiceClientPriority;
using DAXCommon::ServiceTransactionType;

const char* const CANCEL_REASON = "Interrupted by the user of daxctl.";

// A signal for the process, since the mocks are called on another thread than the one that waits for it.
void interrupt() {
    kill(getpid(), SIGINT);
}

// The mocks on the bus, served by the daemon's own adapter on a thread of its own.
class MocksOnTheBus {
public:
    MocksOnTheBus(PrivateBus& bus, std::unique_ptr<IServiceManager> manager)
        : m_bus(bus)
        , m_factory(std::make_shared<OneServiceManagerFactory>(std::move(manager)))
        , m_thread([this] { m_adapter.listenDBUS(m_factory, 1, 0, 10, boost::none, boost::none); }) {
        EXPECT_TRUE(RawPeer().waitForNameOwner("org.kovan.tv.dax.service.servicemanager", true));
    }
    MocksOnTheBus(const MocksOnTheBus&) = delete;
    MocksOnTheBus& operator=(const MocksOnTheBus&) = delete;
    ~MocksOnTheBus() {
        m_bus.stop(); // ends the adapter at once
        m_thread.join();
    }

private:
    PrivateBus& m_bus;
    DAXIPC::DBUSLowLevel::DAXIPCServiceManagerAdapter m_adapter{
        Common::DBUSWrapper::IDBUSAdapter::createDefaultAdapterFactory()};
    std::shared_ptr<OneServiceManagerFactory> m_factory;
    std::thread m_thread; // last: it uses the others
};

class UpgradeRunTest : public Test {
protected:
    UpgradeRunTest() {
        plan.patience = std::chrono::hours(1); // the mocks always answer
        ON_CALL(manager, getService).WillByDefault(Return(service));
        ON_CALL(*service, startNewTransaction).WillByDefault(Return(transaction));
        const ServiceTransactionProgress done{SERVICE_TRANSACTION_SUCCESS, 100, boost::none};
        ON_CALL(*transaction, getSearchProgress).WillByDefault(Return(done));
        ON_CALL(*transaction, getInstallationProgress).WillByDefault(Return(done));
        ON_CALL(*transaction, getFinalizationProgress).WillByDefault(Return(done));
        ServiceSearchResult found;
        found.result = SERVICE_TRANSACTION_SUCCESS;
        found.upgrade = SingleUpgradeDescription{
            DAXCommon::USB, {0x0d, 0xa5}, std::string("1100"), {'<', '>'}, DAXCommon::UPGRADE_KIND_IMPORTANT, 3};
        ON_CALL(*transaction, getSearchResult).WillByDefault(Return(found));
    }

    // Runs the upgrade and returns what it shows to people. Keeps its result and its report.
    std::string run(bool silent = false) {
        StandardError pipe(StandardError::Kind::PIPE);
        dax::Client client(plan.request.clientName);
        daxctl::UpgradeRun upgrade(client, plan, interruption, silent);
        succeeded = upgrade.run();
        report = upgrade.report();
        return pipe.text();
    }

    void letTheServiceBeHeldBy(const std::string& name, int priority) {
        EXPECT_CALL(manager, getService).WillRepeatedly(Return(nullptr));
        EXPECT_CALL(manager, getServiceOwner)
            .WillRepeatedly(DoAll(SetArgReferee<0>(ServiceClientPriority(priority)), SetArgReferee<1>(name),
                                  SetArgReferee<2>(ServiceTransactionType(2)), Return(true)));
    }

    TemporaryRoot root;
    PrivateBus bus;                    // before the signals are blocked, which end it
    daxctl::Interruption interruption; // before the threads, which must not take the signals
    daxctl::UpgradePlan plan;
    std::unique_ptr<NiceMock<MockServiceManager>> ownedManager = std::make_unique<NiceMock<MockServiceManager>>();
    NiceMock<MockServiceManager>& manager = *ownedManager;
    std::shared_ptr<NiceMock<MockService>> service = std::make_shared<NiceMock<MockService>>();
    std::shared_ptr<NiceMock<MockServiceTransaction>> transaction =
        std::make_shared<NiceMock<MockServiceTransaction>>();
    MocksOnTheBus onTheBus{bus, std::move(ownedManager)};
    bool succeeded = false;
    nlohmann::ordered_json report;
};

TEST_F(UpgradeRunTest, AsksForWhatThePlanSaysAndEndsItsSession) {
    plan.request = {"updater", 6, 3};
    plan.upgradeType = DAXCommon::USB;
    plan.searchParameter = "deep";
    plan.items = {"main", "panel"};
    plan.finalizationFlag = true;
    InSequence order;
    EXPECT_CALL(manager, getService(ServiceClientPriority(6), "updater", ServiceTransactionType(3)));
    EXPECT_CALL(*service, startNewTransaction(DAXCommon::USB));
    EXPECT_CALL(*transaction, startSearching("deep"));
    EXPECT_CALL(*transaction, startInstallation(plan.items));
    EXPECT_CALL(*transaction, startFinalization(plan.items, true));
    EXPECT_CALL(*service, invalidate("The client has finished."));
    run();
    EXPECT_TRUE(succeeded);
}

TEST_F(UpgradeRunTest, IsDoneAlsoWhenTheServiceDoesNotEndTheSession) {
    EXPECT_CALL(*service, invalidate).WillRepeatedly(Throw(std::runtime_error("It is going.")));
    run(true);
    EXPECT_TRUE(succeeded);
    EXPECT_EQ(report["outcome"], "finalized");
}

TEST_F(UpgradeRunTest, ReportsEveryFieldOfWhatWasFound) {
    run();
    EXPECT_EQ(report.dump(), R"({"search":{"upgradeType":3,"upgradeId":"0da5","version":"1100","updateInfo":"<>",)"
                             R"("kind":1,"scope":3},"outcome":"finalized"})");
}

TEST_F(UpgradeRunTest, SaysNothingWhenItIsSilent) {
    EXPECT_EQ(run(true), "");
    EXPECT_TRUE(succeeded);
}

TEST_F(UpgradeRunTest, FindsAnUpgradeWithoutAVersion) {
    ServiceSearchResult found;
    found.result = SERVICE_TRANSACTION_SUCCESS;
    found.upgrade = SingleUpgradeDescription{DAXCommon::OTN, {}, boost::none, {}, DAXCommon::UPGRADE_KIND_REGULAR, 0};
    EXPECT_CALL(*transaction, getSearchResult).WillOnce(Return(found));
    EXPECT_THAT(run(), HasSubstr("Found version without a number (scope 0, id )\n"));
    EXPECT_TRUE(report["search"]["version"].is_null());
}

TEST_F(UpgradeRunTest, IsRefusedWithTheNameAndThePriorityOfTheHolderAndWhatToDo) {
    plan.request.priority = -1;
    letTheServiceBeHeldBy("updater", -1);
    EXPECT_EQ(run(), "Refused: the service is held by updater with priority -1. Ask again later, which --wait does, or "
                     "with a --priority above -1, which takes the service over.\n");
    EXPECT_FALSE(succeeded);
    EXPECT_EQ(report.dump(), R"({"refusedBecause":"the service is held by updater with priority -1",)"
                             R"("owner":{"clientName":"updater","priority":-1,"transactionType":2},)"
                             R"("whatToDo":"Ask again later, which --wait does, or with a --priority above -1, which )"
                             R"(takes the service over.","outcome":"refused","kind":"refused"})");
}

TEST_F(UpgradeRunTest, ShowsNoNameOrVersionThatATerminalObeys) {
    ServiceSearchResult found;
    found.result = SERVICE_TRANSACTION_SUCCESS;
    found.upgrade =
        SingleUpgradeDescription{DAXCommon::OTN, {}, std::string("1\x1b[31m"), {}, DAXCommon::UPGRADE_KIND_REGULAR, 0};
    EXPECT_CALL(*transaction, getSearchResult).WillOnce(Return(found));
    EXPECT_THAT(run(), HasSubstr("Found version 1\\x1b[31m (scope 0, id )\n"));
    letTheServiceBeHeldBy("\x1b]0;X\x07", 9);
    EXPECT_THAT(run(), StartsWith("Refused: the service is held by \\x1b]0;X\\x07 with priority 9. "));
    EXPECT_EQ(report["refusedBecause"], "the service is held by \x1b]0;X\x07 with priority 9");
    plan.waits = true;
    plan.waitSeconds = 1;
    EXPECT_THAT(run(), StartsWith("Waiting: the service is held by \\x1b]0;X\\x07 with priority 9.\n"));
}

TEST_F(UpgradeRunTest, IsRefusedByAClientOfTheSameNameWhateverItsPriority) {
    plan.request = {"updater", 9, 2};
    letTheServiceBeHeldBy("updater", 3);
    EXPECT_EQ(run(), "Refused: the service is held by updater with priority 3. End the other client of that name, or "
                     "choose another name with --name.\n");
}

const std::string BY_A_LOCK = "Refused: an external lock of this priority or a higher one is held. Ask again when the "
                              "lock is released, which --wait does, or with a --priority above that of the lock; the "
                              "service does not tell whose it is.\n";

TEST_F(UpgradeRunTest, IsRefusedByALockWhenNobodyHoldsTheService) {
    EXPECT_CALL(manager, getService).WillOnce(Return(nullptr));
    EXPECT_EQ(run(), BY_A_LOCK);
    EXPECT_TRUE(report["owner"].is_null());
}

TEST_F(UpgradeRunTest, IsRefusedByALockWhenTheHolderHasALowerPriority) {
    letTheServiceBeHeldBy("updater", 3);
    EXPECT_EQ(run(), BY_A_LOCK);
}

TEST_F(UpgradeRunTest, WaitsUntilItIsGranted) {
    plan.waits = true;
    EXPECT_CALL(manager, getService)
        .WillOnce(Return(nullptr))
        .WillOnce(Return(nullptr))
        .WillOnce(Return(std::shared_ptr<IService>(service)));
    EXPECT_THAT(run(), StartsWith("Waiting: an external lock of this priority or a higher one is held.\n"
                                  "Search: started\n"));
    EXPECT_TRUE(succeeded);
}

TEST_F(UpgradeRunTest, WaitsNoLongerThanItIsToldTo) {
    plan.waits = true;
    plan.waitSeconds = 0;
    EXPECT_CALL(manager, getService).WillOnce(Return(nullptr));
    EXPECT_EQ(run(), BY_A_LOCK);
    EXPECT_EQ(report["outcome"], "refused");
}

TEST_F(UpgradeRunTest, AnInterruptionEndsTheWaiting) {
    plan.waits = true;
    EXPECT_CALL(manager, getService).WillOnce([](auto&&...) {
        interrupt();
        return nullptr;
    });
    EXPECT_THAT(run(), EndsWith("Interrupted while waiting for the service.\n"));
    EXPECT_EQ(report["outcome"], "cancelled");
}

// The daemon says so at the transaction's first call.
TEST_F(UpgradeRunTest, EndsWithAnErrorWhenItsSessionIsNoLongerValid) {
    EXPECT_CALL(*service, startNewTransaction).WillOnce(Return(nullptr));
    try {
        run();
        FAIL() << "it has gone on";
    } catch (const dax::Error& error) {
        EXPECT_EQ(error.kind(), dax::Error::Kind::TRANSACTION_INVALIDATED);
    }
}

TEST_F(UpgradeRunTest, GoesOnWhenTheCoreDoesNotKnowWhetherASearchIsPossible) {
    EXPECT_CALL(*transaction, isSearchingPossible).WillOnce(Return(boost::none));
    run();
    EXPECT_TRUE(succeeded);
}

TEST_F(UpgradeRunTest, EndsWhenASearchIsNotPossible) {
    EXPECT_CALL(*transaction, isSearchingPossible).WillOnce(Return(boost::optional<bool>(false)));
    EXPECT_CALL(*transaction, startSearching).Times(0);
    EXPECT_EQ(run(), "Searching is not possible now.\n");
    EXPECT_FALSE(succeeded);
}

TEST_F(UpgradeRunTest, EndsWhenNothingWasFound) {
    EXPECT_CALL(*transaction, getSearchResult).WillOnce(Return(ServiceSearchResult()));
    EXPECT_CALL(*transaction, startInstallation).Times(0);
    EXPECT_EQ(run(), "Search: started\nSearch: done\nNo upgrade was found.\n");
    EXPECT_EQ(report["outcome"], "nothingFound");
}

TEST_F(UpgradeRunTest, EndsWithTheFirstStepThatFails) {
    EXPECT_CALL(*transaction, getInstallationProgress)
        .WillOnce(Return(ServiceTransactionProgress{SERVICE_TRANSACTION_FAILED, 30, boost::none}));
    EXPECT_CALL(*transaction, startFinalization).Times(0);
    EXPECT_THAT(run(), EndsWith("Installation: started\nInstallation: failed\nInstallation failed.\n"));
    EXPECT_EQ(report["outcome"], "failed");
    EXPECT_EQ(report["kind"], "failed");
}

TEST_F(UpgradeRunTest, LooksAgainUntilAStepHasEnded) {
    const auto at = [](EServiceTransactionResult result) { return ServiceTransactionProgress{result, 0, boost::none}; };
    EXPECT_CALL(*transaction, getSearchProgress)
        .WillOnce(Return(at(SERVICE_TRANSACTION_UNDEFINED)))
        .WillOnce(Return(at(SERVICE_TRANSACTION_IN_PROGRESS)))
        .WillOnce(Return(at(SERVICE_TRANSACTION_SUCCESS)));
    run();
    EXPECT_TRUE(succeeded);
}

TEST_F(UpgradeRunTest, AnInterruptionDuringAStepCancelsAtTheCore) {
    EXPECT_CALL(*transaction, getInstallationProgress).WillOnce([] {
        interrupt();
        return ServiceTransactionProgress{SERVICE_TRANSACTION_IN_PROGRESS, 30, boost::none};
    });
    EXPECT_CALL(*transaction, cancelServiceTransaction(CANCEL_REASON));
    EXPECT_THAT(run(), EndsWith("Installation: interrupted\n"
                                "Installation was interrupted; the transaction has been cancelled at the core.\n"));
    EXPECT_FALSE(succeeded);
    EXPECT_EQ(report["outcome"], "cancelled");
}

TEST_F(UpgradeRunTest, AnInterruptionDuringACallCountsBeforeTheNextStep) {
    EXPECT_CALL(*transaction, startInstallation).WillOnce([](const std::set<std::string>&) { interrupt(); });
    EXPECT_CALL(*transaction, startFinalization).Times(0);
    EXPECT_CALL(*transaction, cancelServiceTransaction(CANCEL_REASON));
    EXPECT_THAT(run(), EndsWith("Finalization was not started; the transaction has been cancelled at the core.\n"));
    EXPECT_EQ(report["outcome"], "cancelled");
}

TEST_F(UpgradeRunTest, AnInterruptionBeforeTheSearchCancelsAtTheCore) {
    interrupt();
    EXPECT_CALL(*transaction, startSearching).Times(0);
    EXPECT_CALL(*transaction, cancelServiceTransaction(CANCEL_REASON));
    EXPECT_EQ(run(), "Search was not started; the transaction has been cancelled at the core.\n");
}

TEST_F(UpgradeRunTest, AnInterruptionDuringTheLastCallComesTooLate) {
    EXPECT_CALL(*transaction, startFinalization).WillOnce([](const std::set<std::string>&, bool) { interrupt(); });
    EXPECT_CALL(*transaction, cancelServiceTransaction).Times(0);
    run();
    EXPECT_TRUE(succeeded);
    EXPECT_TRUE(interruption.requested()); // also takes the signal, which would otherwise end the test
}

TEST(Session, TellsOfALockThatBlocksByTheDevicesSetting) {
    const char* const key = "memory/menu/support/softwareupdate/isExternalLockAcquired";
    EXPECT_EQ(daxctl::isBlockingExternalLockHeld(), boost::make_optional(false));
    FakeKovan::setSetting(key, 1);
    EXPECT_EQ(daxctl::isBlockingExternalLockHeld(), boost::make_optional(true));
    FakeKovan::setSetting(key, 0);
    EXPECT_EQ(daxctl::isBlockingExternalLockHeld(), boost::make_optional(false));
}

} // namespace
} // namespace DAX::Tests
