#include <boost/date_time/posix_time/time_formatters.hpp>

#include "DAXCommon/UserInterestExceptions.h"
#include "ManagerFixture.h"
#include "support/ProcessDeath.h"

namespace DAX::Tests {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using CServiceManagerStartTest = ServiceFixture;
using CServiceManagerTest = ManagerFixture;

std::unique_ptr<Service::IServiceManager> startManager(const std::shared_ptr<Core::ICore::ICoreFactory>& coreFactory,
                                                       const std::shared_ptr<FakePowerModeScript>& power) {
    return Service::CServiceManagerFactory(coreFactory, std::make_shared<FakePowerModeFactory>(power)).create();
}

TEST_F(CServiceManagerStartTest, MakesTheSubscriberConnectsTheCoreAndSubscribesInThisOrder) {
    const auto manager = startManager(std::make_shared<FakeCoreFactory>(script), power);
    EXPECT_THAT(journal(), ElementsAre("power create", "log INF Service Manager is started.", "core create()",
                                       "log INF Core connected to Service", "power subscribe"));
    EXPECT_TRUE(power->isSubscribed());
}

TEST_F(CServiceManagerStartTest, FailsWithTheFailureOfTheCoreFactoryAndDoesNotSubscribe) {
    script->fail("create", UserInterestExceptions::CNetworkTransferError());
    EXPECT_THROW(startManager(std::make_shared<FakeCoreFactory>(script), power),
                 UserInterestExceptions::CNetworkTransferError);
    EXPECT_THAT(journal(), ElementsAre("power create", "log INF Service Manager is started.", "core create()"));
}

TEST_F(CServiceManagerStartTest, EachManagerOfAFactoryHasACoreOfItsOwn) {
    Service::CServiceManagerFactory factory(std::make_shared<FakeCoreFactory>(script),
                                            std::make_shared<FakePowerModeFactory>(power));
    core.reset();
    const auto first = factory.create();
    const auto second = factory.create();
    EXPECT_EQ(script->liveCores(), 2);
}

TEST_F(CServiceManagerStartTest, AskingForUpgradeTypesWithoutACoreIsAnAssertion) {
    class NoCoreFactory : public Core::ICore::ICoreFactory {
        std::unique_ptr<Core::ICore> create() override { return nullptr; }
    };
    const auto manager = startManager(std::make_shared<NoCoreFactory>(), power);
    EXPECT_ASSERTION(manager->getSupportedUpgradeTypes(), "m_core");
}

TEST_F(CServiceManagerTest, GrantsASessionWhenNothingStandsAgainstIt) {
    const auto service = getService(3, "app", 7);
    ASSERT_TRUE(service);
    EXPECT_EQ(service->getClientPriority(), 3);
    EXPECT_THAT(journal(), ElementsAre("log INF Service is requested. Client name: app", write(PRIORITY_KEY, 3)));
}

TEST_F(CServiceManagerTest, ReportsTheOwnerOfTheSession) {
    const auto service = getService(3, "app", 7);
    DAXCommon::ServiceClientPriority priority{};
    DAXCommon::ServiceTransactionType type{};
    std::string client;
    ASSERT_TRUE(manager->getServiceOwner(priority, client, type));
    EXPECT_EQ(priority, 3);
    EXPECT_EQ(client, "app");
    EXPECT_EQ(type, 7);
}

TEST_F(CServiceManagerTest, ReportsNoOwnerOnceTheHolderDroppedTheSessionAndLeavesTheArgumentsAlone) {
    getService(3, "app", 7).reset();
    auto priority = rank(-77);
    auto type = purpose(-78);
    std::string client = "untouched";
    EXPECT_FALSE(manager->getServiceOwner(priority, client, type));
    EXPECT_EQ(priority, -77);
    EXPECT_EQ(client, "untouched");
    EXPECT_EQ(type, -78);
}

TEST_F(CServiceManagerTest, RefusesEveryoneWhileTheInstallationIsLocked) {
    const auto owner = getService(3, "app");
    root.write("mnt/systemrw/org.kovan.tv.dax/data/tv/InstallationLock.dat", "");
    forget();
    EXPECT_FALSE(getService(1000, "other"));
    EXPECT_THAT(journal(),
                ElementsAre("log INF Service is requested. Client name: other",
                            "log INF Installation lock is acquired. There is no possibility to get service."));
    EXPECT_TRUE(owner->startNewTransaction(DAXCommon::OTN));
}

TEST_F(CServiceManagerTest, LooksAtTheInstallationLockBeforeTheExternalLocks) {
    root.write("mnt/systemrw/org.kovan.tv.dax/data/tv/InstallationLock.dat", "");
    manager->acquireExternalLock("holder", rank(9));
    forget();
    EXPECT_FALSE(getService(1, "app"));
    EXPECT_EQ(journal().back(), "log INF Installation lock is acquired. There is no possibility to get service.");
}

TEST_F(CServiceManagerTest, RefusesWhileAnExternalLockOfTheSamePriorityIsHeld) {
    manager->acquireExternalLock("holder", rank(3));
    forget();
    EXPECT_FALSE(getService(3, "app"));
    EXPECT_THAT(journal(), ElementsAre("log INF Service is requested. Client name: app",
                                       "log INF External lock is acquired by:  holder. There is no possibility to get "
                                       "service."));
}

TEST_F(CServiceManagerTest, NamesAllLockHoldersInTheOrderOfTheirLocks) {
    manager->acquireExternalLock("zoe", rank(1));
    manager->acquireExternalLock("adam", rank(9));
    manager->acquireExternalLock("zoe", rank(2));
    EXPECT_FALSE(getService(5, "app"));
    EXPECT_EQ(journal().back(),
              "log INF External lock is acquired by:  zoe adam zoe. There is no possibility to get service.");
}

TEST_F(CServiceManagerTest, AnExternalLockBlocksItsPriorityAndBelowAndLetsTheNextOneIn) {
    manager->acquireExternalLock("holder", rank(3));
    EXPECT_FALSE(getService(2, "below"));
    EXPECT_FALSE(getService(3, "same"));
    EXPECT_TRUE(getService(4, "above"));
}

TEST_F(CServiceManagerTest, ComparesLockPrioritiesAsSignedNumbers) {
    manager->acquireExternalLock("holder", rank(-5));
    EXPECT_FALSE(getService(-6, "below"));
    EXPECT_TRUE(getService(-4, "above"));
    EXPECT_TRUE(getService(1, "far above"));
}

TEST_F(CServiceManagerTest, RefusesTheSameClientEvenAtAHigherPriority) {
    const auto owner = getService(3, "app");
    forget();
    EXPECT_FALSE(getService(9, "app"));
    EXPECT_THAT(journal(), ElementsAre("log INF Service is requested. Client name: app",
                                       "log WRN Client app is requesting service while he already owns it. Request for "
                                       "service is rejected."));
    EXPECT_EQ(owner->getClientPriority(), 3);
}

TEST_F(CServiceManagerTest, LooksAtTheExternalLocksBeforeTheSameClient) {
    const auto owner = getService(5, "app");
    manager->acquireExternalLock("holder", rank(7));
    EXPECT_FALSE(getService(5, "app"));
    EXPECT_EQ(journal().back(),
              "log INF External lock is acquired by:  holder. There is no possibility to get service.");
}

class RefusedRequest : public ManagerFixture, public ::testing::WithParamInterface<int> {};

TEST_P(RefusedRequest, LeavesTheOwnerItsSession) {
    const auto owner = getService(3, "app");
    forget();
    EXPECT_FALSE(getService(GetParam(), "other"));
    EXPECT_THAT(journal(), ElementsAre("log INF Service is requested. Client name: other",
                                       "log ERR Currently requesting client other has lower priority than current "
                                       "owner app. Request for service is rejected."));
    EXPECT_EQ(this->owner(), "app");
    EXPECT_TRUE(owner->startNewTransaction(DAXCommon::OTN));
}

INSTANTIATE_TEST_SUITE_P(EqualAndLowerPriorities, RefusedRequest, ::testing::Values(3, 2, -1));

TEST_F(CServiceManagerTest, AHigherPriorityTakesTheSessionAway) {
    const auto old = getService(3, "app");
    const auto transaction = old->startNewTransaction(DAXCommon::OTN);
    forget();
    const auto service = getService(4, "boss");
    ASSERT_TRUE(service);
    const std::string reason = "Invalidating CService - reason: Invalidating service because higher priority client "
                               "requested service: boss";
    EXPECT_THAT(journal(),
                ElementsAre("log INF Service is requested. Client name: boss",
                            "log ERR Currently requesting client boss has lower priority than current owner app. "
                            "Current service will be invalidated.",
                            "log INF cancelServiceTransaction() reason: " + reason,
                            "core cancelCoreTransaction(cancelServiceTransaction() is canceling CoreTransaction. "
                            "Reason: " +
                                reason + ")",
                            "log INF Reset done.", "log INF Invalidate done.", write(PRIORITY_KEY, 4)));
    EXPECT_EQ(owner(), "boss");
    EXPECT_FALSE(old->startNewTransaction(DAXCommon::OTN));
}

TEST_F(CServiceManagerTest, TheOldSessionsEndOverwritesThePriorityOfTheNewOne) {
    auto old = getService(3, "app");
    const auto service = getService(4, "boss");
    EXPECT_EQ(FakeKovan::setting(PRIORITY_KEY), FakeKovan::Value(4));
    old.reset();
    EXPECT_EQ(FakeKovan::setting(PRIORITY_KEY), FakeKovan::Value(-1));
    EXPECT_EQ(owner(), "boss");
}

TEST_F(CServiceManagerTest, TheHoldersPointerAloneKeepsTheSessionAlive) {
    const auto service = getService(3, "app");
    EXPECT_EQ(service.use_count(), 1);
}

TEST_F(CServiceManagerTest, AnInvalidatedSessionIsStillTheOwnerUntilItIsDropped) {
    const auto service = getService(3, "app");
    service->invalidate("by its client");
    EXPECT_EQ(owner(), "app");
    EXPECT_FALSE(getService(3, "other"));
}

TEST_F(CServiceManagerTest, ForwardsTheVersionAndTheUpgradeTypes) {
    script->currentVersion = "1234";
    script->supportedUpgradeTypes = {DAXCommon::USB, DAXCommon::OTA};
    EXPECT_EQ(manager->getCurrentVersion(), "1234");
    EXPECT_THAT(manager->getSupportedUpgradeTypes(), ElementsAre(DAXCommon::USB, DAXCommon::OTA));
    EXPECT_THAT(journal(), ElementsAre("core getCurrentVersion()", "core getSupportedUpgradeTypes()"));
}

TEST_F(CServiceManagerTest, LogsTheFactoryResetBeforeItGoesToTheCore) {
    manager->scheduleFactoryReset();
    EXPECT_THAT(journal(), ElementsAre("log INF Calling factoryReset for core.", "core scheduleFactoryReset()"));
}

TEST_F(CServiceManagerTest, LetsTheFailuresOfTheCorePass) {
    for (const char* operation : {"getCurrentVersion", "getSupportedUpgradeTypes", "scheduleFactoryReset"}) {
        script->fail(operation, UserInterestExceptions::CUpdateFailed());
    }
    EXPECT_THROW(manager->getCurrentVersion(), UserInterestExceptions::CUpdateFailed);
    EXPECT_THROW(manager->getSupportedUpgradeTypes(), UserInterestExceptions::CUpdateFailed);
    EXPECT_THROW(manager->scheduleFactoryReset(), UserInterestExceptions::CUpdateFailed);
}

TEST_F(CServiceManagerTest, GivesTheDateOfTheLastSearch) {
    EXPECT_FALSE(manager->getLastSearchingForUpgradeDate());
    root.write("mnt/systemrw/org.kovan.tv.dax/data/tv/LastSearchingDate", "20240229T131415");
    const auto date = manager->getLastSearchingForUpgradeDate();
    ASSERT_TRUE(date);
    EXPECT_EQ(to_iso_string(*date), "20240229T131415");
}

TEST_F(CServiceManagerTest, ItsEndInvalidatesTheSessionAndThenUnsubscribes) {
    const auto service = getService(3, "app");
    const auto transaction = service->startNewTransaction(DAXCommon::OTN);
    forget();
    manager.reset();
    const std::string reason = "Invalidating CService - reason: Invalidating service in CServiceManager destructor.";
    EXPECT_THAT(journal(), ElementsAre("log INF cancelServiceTransaction() reason: " + reason,
                                       "core cancelCoreTransaction(cancelServiceTransaction() is canceling "
                                       "CoreTransaction. Reason: " +
                                           reason + ")",
                                       "log INF Reset done.", "log INF Invalidate done.", "power unsubscribe"));
    EXPECT_FALSE(service->startNewTransaction(DAXCommon::OTN));
}

// Records its destruction.
class NotedCore : public FakeCore {
public:
    using FakeCore::FakeCore;
    ~NotedCore() override { FakeKovan::note("core is gone"); }
};

class NotedCoreFactory : public Core::ICore::ICoreFactory {
public:
    explicit NotedCoreFactory(std::shared_ptr<FakeCoreScript> script) : m_script(std::move(script)) {}

    std::unique_ptr<Core::ICore> create() override { return std::make_unique<NotedCore>(m_script); }

private:
    const std::shared_ptr<FakeCoreScript> m_script;
};

TEST_F(CServiceManagerStartTest, ItsEndLetsThePowerEventsGoBeforeTheCore) {
    auto manager = startManager(std::make_shared<NotedCoreFactory>(script), power);
    manager->acquireExternalLock("holder", rank(3));
    forget();
    manager.reset();
    EXPECT_THAT(journal(), ElementsAre("power unsubscribe", "core is gone"));
}

TEST_F(CServiceManagerStartTest, ItsEndInvalidatesTheSessionBeforeAllElseAndLeavesItTheCore) {
    auto manager = startManager(std::make_shared<NotedCoreFactory>(script), power);
    auto service = manager->getService(rank(3), "app", purpose(0));
    forget();
    manager.reset();
    EXPECT_THAT(journal(), ElementsAre("log INF Transaction does not exist. Nothing to do.", "log INF Invalidate done.",
                                       "power unsubscribe"));
    service.reset();
    EXPECT_EQ(journal().back(), "core is gone");
}

TEST_F(CServiceManagerTest, ItsEndWithoutASessionOnlyUnsubscribesAndDropsTheCore) {
    core.reset();
    manager.reset();
    EXPECT_THAT(journal(), ElementsAre("power unsubscribe"));
    EXPECT_EQ(script->liveCores(), 0);
}

} // namespace
} // namespace DAX::Tests
