#include <future>
#include <thread>

#include "FailingLock.h"
#include "ManagerFixture.h"

namespace DAX::Tests {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

class PowerModeChange : public ManagerFixture, public ::testing::WithParamInterface<int> {
protected:
    const std::string reason = "Invalidating CService - reason: Invalidating service due to power mode change.";
    const std::string cancel =
        "core cancelCoreTransaction(cancelServiceTransaction() is canceling CoreTransaction. Reason: " + reason + ")";
};

TEST_P(PowerModeChange, InvalidatesTheSessionWhateverTheMode) {
    const auto service = getService(3, "app");
    const auto transaction = service->startNewTransaction(DAXCommon::OTN);
    forget();
    power->change(static_cast<DAXCommon::PowerMode>(GetParam()));
    EXPECT_THAT(journal(),
                ElementsAre("log INF PowerMode Changed, invalidate service", "log INF service is stopped by power off.",
                            "log INF cancelServiceTransaction() reason: " + reason, cancel, "log INF Reset done.",
                            "log INF Invalidate done."));
    EXPECT_FALSE(service->startNewTransaction(DAXCommon::OTN));
}

INSTANTIATE_TEST_SUITE_P(AllModes, PowerModeChange, ::testing::Range(0, 5));

TEST_F(PowerModeChange, WithoutASessionIsOnlyLogged) {
    power->change(DAXCommon::POWER_MODE_STANDBY);
    EXPECT_THAT(journal(), ElementsAre("log INF PowerMode Changed, invalidate service",
                                       "log INF service is stopped but there is no active service now."));
}

TEST_F(PowerModeChange, AFailureOfTheCoreGoesNoFurther) {
    const auto service = getService(3, "app");
    const auto transaction = service->startNewTransaction(DAXCommon::OTN);
    script->fail("cancelCoreTransaction", std::runtime_error("no core"));
    EXPECT_NO_THROW(power->change(DAXCommon::POWER_MODE_STANDBY));
    EXPECT_EQ(journal().back(), "log INF Invalidate done.");
}

TEST_F(PowerModeChange, AnInvalidationThatFailsIsLoggedAndGoesNoFurther) {
    const auto service = getService(3, "app");
    FakeKovan::afterMessage("service is stopped by power off.", failNextLock);
    EXPECT_NO_THROW(power->change(DAXCommon::POWER_MODE_STANDBY));
    EXPECT_THAT(logged("FTL"), AllOf(StartsWith("Unable to invalidate transaction. Exception caught: Dynamic exception "
                                                "type: std::system_error\n"),
                                     HasSubstr("std::exception::what: Invalid argument")));
    EXPECT_TRUE(service->startNewTransaction(DAXCommon::OTN)); // the session was not invalidated
}

TEST_F(PowerModeChange, OnAnotherThreadWaitsForTheTransactionBeingStartedAndCancelsIt) {
    const auto service = getService(3, "app");
    std::thread changing;
    script->on("createTransaction", [&] {
        changing = std::thread([&] { power->change(DAXCommon::POWER_MODE_STANDBY); });
        EXPECT_TRUE(FakeKovan::waitForMessage("INF", "service is stopped by power off."));
    });
    EXPECT_TRUE(service->startNewTransaction(DAXCommon::OTN));
    changing.join();
    EXPECT_THAT(journal(), Contains(cancel));
    EXPECT_FALSE(service->startNewTransaction(DAXCommon::OTN));
}

} // namespace
} // namespace DAX::Tests
