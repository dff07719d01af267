// The effect of a change of the device's power on the daemon and its clients.
#include <filesystem>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "DAXCommon/UserInterestExceptions.h"
#include "support/WaitUntil.h"
#include "system/support/Desk.h"
#include "system/support/Scenarios.h"

namespace DAX::Tests {
namespace {

using namespace testing;
using namespace DAXCommon;
using namespace Service;
using UserInterestExceptions::TransactionInvalidatedException;

const char* const CANCEL_REASON = "cancelServiceTransaction() is canceling CoreTransaction. Reason: Invalidating "
                                  "CService - reason: Invalidating service due to power mode change.";

// A client in the middle of an upgrade.
struct Client {
    explicit Client(const Desk& desk)
        : manager(desk.connect())
        , session(manager->getService(ServiceClientPriority(5), "updater", ServiceTransactionType(0)))
        , transaction(session->startNewTransaction(OTN)) {
        transaction->startSearching("");
    }

    std::unique_ptr<IServiceManager> manager;
    std::shared_ptr<IService> session;
    std::shared_ptr<IServiceTransaction> transaction;
};

class PowerChange : public Test {
protected:
    PowerChange() { desk.play(QUICK); }

    void changePowerMode(int mode) {
        EXPECT_EQ(desk.run("kovanctl", {"power-mode", std::to_string(mode)}).end, ProcessEnd::exited(0));
    }

    bool waitForCancels(int count) { return desk.waitForCoreCall("cancelCoreTransaction", count); }

    std::vector<std::string> cancelReasons() {
        std::vector<std::string> reasons;
        for (const auto& call : desk.coreCalls()) {
            if (call.at("method") == "cancelCoreTransaction") {
                reasons.push_back(call.at("arguments").at("reason"));
            }
        }
        return reasons;
    }

    // How many files the daemon has open.
    long openFiles() {
        const std::filesystem::directory_iterator files("/proc/" + std::to_string(desk.daemon()) + "/fd");
        return std::distance(begin(files), end(files));
    }

    Desk desk;
};

TEST_F(PowerChange, EndsTheLiveSession) {
    const Client client(desk);
    changePowerMode(2);
    ASSERT_TRUE(waitForCancels(1));
    EXPECT_THROW(client.transaction->getSearchProgress(), TransactionInvalidatedException);
    EXPECT_THROW(client.session->startNewTransaction(OTN)->getSearchProgress(), TransactionInvalidatedException);
    EXPECT_THAT(cancelReasons(), ElementsAre(CANCEL_REASON));
    EXPECT_THAT(desk.daemonMessages(),
                IsSupersetOf({"Power Mode Changed signal received.", "PowerMode Changed, invalidate service",
                              "service is stopped by power off.", "Invalidate done."}));
}

TEST_F(PowerChange, LeavesTheDaemonServing) {
    const pid_t daemon = [this] {
        const Client client(desk);
        changePowerMode(2);
        EXPECT_TRUE(waitForCancels(1));
        return desk.daemon();
    }();
    EXPECT_TRUE(desk.waitForMessage("We are now entering idle state."));
    EXPECT_EQ(desk.run("daxctl", {"upgrade"}).end, ProcessEnd::exited(0));
    EXPECT_EQ(desk.daemon(), daemon);
}

TEST_F(PowerChange, FindsNoSession) {
    const auto manager = desk.connect();
    manager->getCurrentVersion();
    changePowerMode(3);
    EXPECT_TRUE(desk.waitForMessage("service is stopped but there is no active service now."));
    EXPECT_EQ(manager->getCurrentVersion(), "1000");
}

TEST_F(PowerChange, MayComeAHundredTimes) {
    const int rounds = 100;
    long files = 0;
    for (int round = 1; round <= rounds; ++round) {
        {
            const Client client(desk);
            changePowerMode(round % 2 + 1);
            ASSERT_TRUE(waitForCancels(round));
            EXPECT_THROW(client.transaction->getSearchProgress(), TransactionInvalidatedException);
        }
        ASSERT_TRUE(waitUntil([&] { return desk.countMessages("We are now entering idle state.") == round; }));
        files = round == 1 ? openFiles() : files;
    }
    EXPECT_EQ(openFiles(), files);
    EXPECT_THAT(cancelReasons(), AllOf(SizeIs(rounds), Each(CANCEL_REASON)));
    EXPECT_EQ(desk.countMessages("Power Mode Changed signal received."), rounds);
}

TEST_F(PowerChange, RacesWithNewTransactions) {
    const Client client(desk);
    const auto toggler = desk.start("kovanctl", {"power-mode", "1"});
    EXPECT_TRUE(waitUntil([&] {
        try {
            client.session->startNewTransaction(OTN)->isSearchingPossible();
            return false;
        } catch (const TransactionInvalidatedException&) {
            return true;
        }
    }));
    EXPECT_EQ(cancelReasons().back(), CANCEL_REASON);
    EXPECT_EQ(desk.connect()->getCurrentVersion(), "1000");
}

} // namespace
} // namespace DAX::Tests
