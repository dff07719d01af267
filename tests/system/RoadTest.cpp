// A whole upgrade, by the client library and by daxctl.
#include <boost/date_time/posix_time/posix_time_io.hpp>
#include <boost/optional/optional_io.hpp>
#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "support/WaitUntil.h"
#include "system/support/Desk.h"
#include "system/support/Scenarios.h"

namespace DAX::Tests {
namespace {

using namespace testing;
using namespace DAXCommon;
using namespace Service;

const char* const LOCK_FILE = "mnt/systemrw/org.kovan.tv.dax/data/tv/InstallationLock.dat";
const std::string KEYS = "memory/menu/support/softwareupdate/";

class Road : public Test {
protected:
    Road() { desk.play(QUICK); }

    // The methods that were called at the core, where polls in a row count as one.
    std::vector<std::string> coreRoad() const {
        auto methods = desk.coreMethods();
        methods.erase(std::unique(methods.begin(), methods.end()), methods.end());
        return methods;
    }

    template <class Progress>
    void follow(IServiceTransaction& transaction, Progress progress) {
        ASSERT_TRUE(waitUntil([&] { return (transaction.*progress)().result == SERVICE_TRANSACTION_SUCCESS; }));
    }

    Desk desk;
};

TEST_F(Road, RunsFromSearchToFinalization) {
    const auto manager = desk.connect();
    const auto session = manager->getService(ServiceClientPriority(5), "updater", ServiceTransactionType(2));
    ASSERT_NE(session, nullptr);
    EXPECT_EQ(session->getClientPriority(), 5);
    EXPECT_EQ(desk.setting(KEYS + "currentServiceClientPriority"), "5");
    const auto transaction = session->startNewTransaction(OTN);
    EXPECT_EQ(transaction->isSearchingPossible(), boost::optional<bool>(true));
    transaction->startSearching("deep");
    follow(*transaction, &IServiceTransaction::getSearchProgress);
    const auto result = transaction->getSearchResult();
    EXPECT_EQ(result.upgrade->version, boost::optional<std::string>("1100"));
    transaction->startInstallation({"main", "panel"});
    follow(*transaction, &IServiceTransaction::getInstallationProgress);
    transaction->startFinalization({"main"}, true);
    follow(*transaction, &IServiceTransaction::getFinalizationProgress);

    EXPECT_THAT(coreRoad(), ElementsAre("getCurrentVersion", "createTransaction", "helloMessage", "isSearchingPossible",
                                        "startSearching", "getSearchProgress", "getSearchResult", "startInstallation",
                                        "getInstallationProgress", "startFinalization", "getFinalizationProgress"));
    EXPECT_EQ(desk.setting(KEYS + "isInstallationLockReleased"), "0");
    EXPECT_EQ(manager->getService(ServiceClientPriority(9), "other", ServiceTransactionType(0)), nullptr);
}

TEST_F(Road, LeavesTheLockFileWithItsReport) {
    EXPECT_EQ(desk.run("daxctl", {"upgrade"}).end, ProcessEnd::exited(0));
    const std::string report = "Type: OTN(F) from: 1000 to: 1100";
    const std::string file = desk.root.read(LOCK_FILE);
    EXPECT_EQ(file, std::string("\x20\0\0\0", 4) + report + "CHECKSUMED" + "\x81\xa9\xe2\x9f");
    EXPECT_EQ(desk.countMessages("Upgrade info: " + report), 1);
}

TEST_F(Road, HandsTheClientsWordsToTheCore) {
    desk.run("kovanctl", {"setting", "set", "db/menu/support/softwareupdate/use_cellular_int", "int", "1"});
    desk.run("kovanctl", {"setting", "set", "db/menu/support/softwareupdate/was_successfull_upgrade", "int", "1"});
    EXPECT_EQ(desk.run("daxctl", {"upgrade", "--type", "USB", "--transaction-type", "7", "--item", "b", "--item", "a",
                                  "--search-parameter", "deep"})
                  .end,
              ProcessEnd::exited(0));
    std::map<std::string, nlohmann::json> arguments;
    for (const auto& call : desk.coreCalls()) {
        arguments[call.at("method")] = call.at("arguments");
    }
    EXPECT_EQ(arguments["createTransaction"]["parameters"],
              nlohmann::json::parse(R"({"upgradeType": 3, "transactionType": 7, "isCellularConnectionAllowed": true,
                                        "wasAnySuccessfulUpgrade": true})"));
    EXPECT_EQ(arguments["startSearching"]["searchParameter"], "deep");
    EXPECT_EQ(arguments["startInstallation"]["items"], nlohmann::json::parse(R"(["a", "b"])"));
    EXPECT_EQ(arguments["startFinalization"],
              nlohmann::json::parse(R"({"items": ["a", "b"], "upgradeId": "0da5", "flag": false})"));
}

TEST_F(Road, ASearchOfTypeTwoKeepsItsDateOverARestart) {
    EXPECT_EQ(desk.connect()->getLastSearchingForUpgradeDate(), boost::none);
    EXPECT_EQ(desk.run("daxctl", {"search"}).end, ProcessEnd::exited(0));
    const auto date = desk.connect()->getLastSearchingForUpgradeDate();
    EXPECT_TRUE(date);
    desk.killDaemon();
    EXPECT_EQ(desk.connect()->getLastSearchingForUpgradeDate(), date);
}

TEST_F(Road, ASearchOfAnotherTypeLeavesNoDate) {
    EXPECT_EQ(desk.run("daxctl", {"search", "--transaction-type", "1"}).end, ProcessEnd::exited(0));
    EXPECT_EQ(desk.connect()->getLastSearchingForUpgradeDate(), boost::none);
}

TEST_F(Road, TheLockOutlivesADaemonThatWasKilled) {
    EXPECT_EQ(desk.run("daxctl", {"upgrade"}).end, ProcessEnd::exited(0));
    const pid_t first = desk.daemon();
    desk.killDaemon();
    const auto refused = desk.run("daxctl", {"upgrade"});
    EXPECT_EQ(refused.end, ProcessEnd::exited(1));
    EXPECT_THAT(refused.errors, HasSubstr("Refused: an installation lock is in force."));
    EXPECT_NE(desk.daemon(), first);
    EXPECT_EQ(desk.countMessages("Installation lock is acquired. There is no possibility to get service."), 1);
}

TEST_F(Road, AFailedSearchEndsIt) {
    desk.play("[search]\nseconds=0\nresult=failed\n");
    const auto run = desk.run("daxctl", {"upgrade"});
    EXPECT_EQ(run.end, ProcessEnd::exited(1));
    EXPECT_THAT(run.errors, HasSubstr("Search failed."));
    EXPECT_THAT(desk.coreMethods(), Not(Contains("startInstallation")));
}

TEST_F(Road, AskingForTheResultOfAnUnfinishedSearchEndsTheDaemonAndTheBusStartsItAnew) {
    desk.play("[search]\nseconds=1000\n");
    const auto manager = desk.connect();
    const auto session = manager->getService(ServiceClientPriority(5), "hasty", ServiceTransactionType(0));
    const auto transaction = session->startNewTransaction(OTN);
    transaction->startSearching("");
    const pid_t first = desk.daemon();
    EXPECT_ANY_THROW(transaction->getSearchResult());
    ASSERT_TRUE(waitUntil([first] { return hasEnded(first); }));
    EXPECT_EQ(desk.countMessages("Getting search result for Core. The result is: 1 (TRANSACTION_IN_PROGRESS)."), 1);
    EXPECT_EQ(desk.countMessages("ASSERTION FAILED: coreSearchResult.result == Core::TRANSACTION_FAILED || "
                                 "coreSearchResult.result == Core::TRANSACTION_SUCCESS, "),
              1);
    EXPECT_THAT(desk.root.read("var/log/kovan/events.jsonl"), HasSubstr("EV008"));
    EXPECT_EQ(manager->getCurrentVersion(), "1000");
    EXPECT_NE(desk.daemon(), first);
}

} // namespace
} // namespace DAX::Tests
