// A client, the core or the daemon dies at a step of an upgrade: what happens to the others.
#include <csignal>
#include <fstream>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>
#include <unistd.h>

#include "support/ForkedProcess.h"
#include "support/WaitUntil.h"
#include "system/support/Desk.h"
#include "system/support/Scenarios.h"

namespace DAX::Tests {
namespace {

using namespace testing;
using namespace DAXCommon;
using namespace Service;

const char* const LOCK_FILE = "mnt/systemrw/org.kovan.tv.dax/data/tv/InstallationLock.dat";

// The steps at which a client can be.
enum ClientStep { CONNECTED, IN_SESSION, IN_TRANSACTION, SEARCHING, SEARCHED, INSTALLING, INSTALLED, FINALIZING };

template <class Progress>
void waitForSuccess(IServiceTransaction& transaction, Progress progress) {
    waitUntil([&] { return (transaction.*progress)().result == SERVICE_TRANSACTION_SUCCESS; });
}

void walkTransaction(IServiceTransaction& transaction, ClientStep last) {
    if (last >= SEARCHING) {
        transaction.startSearching("");
    }
    if (last >= SEARCHED) {
        waitForSuccess(transaction, &IServiceTransaction::getSearchProgress);
        transaction.getSearchResult();
    }
    if (last >= INSTALLING) {
        transaction.startInstallation({});
    }
    if (last >= INSTALLED) {
        waitForSuccess(transaction, &IServiceTransaction::getInstallationProgress);
    }
    if (last >= FINALIZING) {
        transaction.startFinalization({}, false);
    }
}

// A client that goes to a step, reports that by a file and stays there.
int stayAt(const Desk& desk, ClientStep last, const std::string& arrival) {
    const auto manager = desk.connect();
    manager->getCurrentVersion();
    std::shared_ptr<IService> session;
    std::shared_ptr<IServiceTransaction> transaction;
    if (last >= IN_SESSION) {
        session = manager->getService(ServiceClientPriority(5), "doomed", ServiceTransactionType(0));
    }
    if (last >= IN_TRANSACTION) {
        transaction = session->startNewTransaction(OTN);
        walkTransaction(*transaction, last);
    }
    std::ofstream(arrival) << "arrived";
    pause();
    return 0;
}

class ClientDeath : public TestWithParam<ClientStep> {
protected:
    ClientDeath() { desk.play(QUICK); }

    Desk desk;
};

TEST_P(ClientDeath, EndsItsSessionAndCancelsItsTransactionAtTheCore) {
    const std::string arrival = (desk.root / "arrived").string();
    ForkedProcess client([&] { return stayAt(desk, GetParam(), arrival); });
    ASSERT_TRUE(waitUntil([&] { return desk.root.read("arrived") == "arrived"; }));
    kill(client.pid(), SIGKILL);
    ASSERT_TRUE(desk.waitForMessage("We are now entering idle state."));

    auto priority = ServiceClientPriority(0);
    std::string name;
    auto type = ServiceTransactionType(0);
    const auto manager = desk.connect();
    EXPECT_FALSE(manager->getServiceOwner(priority, name, type));
    if (GetParam() >= IN_TRANSACTION) {
        EXPECT_THAT(desk.coreCalls().back().at("arguments").value("reason", ""),
                    MatchesRegex("cancelServiceTransaction\\(\\) is canceling CoreTransaction\\. Reason: Invalidating "
                                 "CService - reason: Invalidating Service, because ServiceManager client "
                                 "disconnected: :1\\.[0-9]+\\. Current Service client: :1\\.[0-9]+\\. Proxy name: "
                                 "Proxy-[0-9]+"));
    } else {
        EXPECT_THAT(desk.coreMethods(), Not(Contains("cancelCoreTransaction")));
    }
    const bool isLocked = GetParam() >= FINALIZING;
    const auto next = manager->getService(ServiceClientPriority(1), "next", ServiceTransactionType(0));
    EXPECT_EQ(next == nullptr, isLocked);
}

INSTANTIATE_TEST_SUITE_P(AtEachStep, ClientDeath,
                         Values(CONNECTED, IN_SESSION, IN_TRANSACTION, SEARCHING, SEARCHED, INSTALLING, INSTALLED,
                                FINALIZING));

class CoreDeath : public TestWithParam<std::tuple<const char*, const char*>> {
protected:
    Desk desk;
};

TEST_P(CoreDeath, EndsTheRunAndTheNextOneWorks) {
    const auto [method, when] = GetParam();
    desk.play(std::string("[search]\nseconds=0.01\n[installation]\nseconds=0.01\n") +
              "[finalization]\nseconds=1000\n" // else the first question for the progress could be the last call
              "[fault " +
              method + "]\ndie=" + when + "\n");
    const pid_t daemon = (desk.connect()->getCurrentVersion(), desk.daemon());
    const auto run = desk.run("daxctl", {"upgrade"});
    EXPECT_EQ(run.end, ProcessEnd::exited(1)) << run.errors;
    EXPECT_THAT(run.errors, AnyOf(HasSubstr("DAXUnknownException"), HasSubstr("TransactionInvalidatedException")));
    EXPECT_EQ(desk.daemon(), daemon);

    desk.killCore();
    desk.play(QUICK);
    std::remove((desk.root / LOCK_FILE).c_str());
    const auto next = desk.run("daxctl", {"upgrade", "--name", "next"});
    EXPECT_EQ(next.end, ProcessEnd::exited(0)) << next.errors;
    EXPECT_EQ(desk.daemon(), daemon);
}

INSTANTIATE_TEST_SUITE_P(AtEachStep, CoreDeath,
                         Combine(Values("createTransaction", "helloMessage", "isSearchingPossible", "startSearching",
                                        "getSearchProgress", "getSearchResult", "startInstallation",
                                        "getInstallationProgress", "startFinalization", "getFinalizationProgress"),
                                 Values("before", "after")),
                         [](const auto& step) {
                             return std::string(std::get<0>(step.param)) + "_" + std::get<1>(step.param);
                         });

TEST(DaemonDeath, IsAnErrorToItsClientAndTheNextRunWorks) {
    Desk desk;
    desk.play("[search]\nseconds=1000\n");
    const auto client = desk.start("daxctl", {"upgrade"});
    ASSERT_TRUE(desk.waitForCoreCall("getSearchProgress"));
    desk.killDaemon();
    EXPECT_EQ(client->waitForEnd(), ProcessEnd::exited(1));
    EXPECT_THAT(client->errors(),
                AnyOf(HasSubstr("RemoteObjectNotAccessible"), HasSubstr("TransactionInvalidatedException")));
    desk.play(QUICK);
    EXPECT_EQ(desk.run("daxctl", {"upgrade"}).end, ProcessEnd::exited(0));
}

} // namespace
} // namespace DAX::Tests
