// The program, as the bus starts it.
#include <csignal>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Common/DBUSWrapper/DBUSWrapperExceptions.h"
#include "DAXIPC/DBUSLowLevel/Proxies/DAXCoreProxy/CCoreProxyFactory.h"
#include "support/PrivateBus.h"
#include "support/Process.h"
#include "support/TemporaryRoot.h"
#include "support/WaitUntil.h"

using namespace DAX;
using namespace DAX::Tests;
using DAX::Common::DBUSWrapper::IDBUSProxy;
using DAX::Common::DBUSWrapper::DBUSWrapperExceptions::RemoteObjectNotAccessible;
using testing::HasSubstr;

namespace {

class SimulatorProcessTest : public testing::Test {
protected:
    void play(const std::string& scenario) const { m_root.write("etc/kovan/core-scenario.ini", scenario); }

    std::unique_ptr<Process> start(std::vector<std::string> options = {}) const {
        options.insert(options.begin(), SIMULATOR);
        return std::make_unique<Process>(Command{options, {{"KOVAN_DLOG", "none"}}, "", {}});
    }

    // A core that answers: it does as soon as it has its name.
    std::unique_ptr<Core::ICore> connect() const {
        auto core = DAXIPC::DBUSLowLevel::CCoreProxyFactory(IDBUSProxy::createDefaultProxyFactory(), 50).create();
        EXPECT_TRUE(waitUntil([&core] {
            try {
                core->getSupportedUpgradeTypes();
                return true;
            } catch (const RemoteObjectNotAccessible&) {
                return false;
            }
        }));
        return core;
    }

    TemporaryRoot m_root;
    PrivateBus m_bus;
};

TEST_F(SimulatorProcessTest, TellsHowItIsUsed) {
    const auto process = start({"--help"});
    EXPECT_EQ(process->waitForEnd(), ProcessEnd::exited(0));
    EXPECT_THAT(process->output(), HasSubstr("--scenario"));
    EXPECT_THAT(process->output(), HasSubstr("--idle-timeout"));
}

TEST_F(SimulatorProcessTest, RefusesUnknownOptionsWithStatus2) {
    EXPECT_EQ(start({"--speed"})->waitForEnd(), ProcessEnd::exited(2));
}

TEST_F(SimulatorProcessTest, EndsWithStatus2WhenTheScenarioIsBroken) {
    play("[search]\nseconds=soon\n");
    const auto process = start();
    EXPECT_EQ(process->waitForEnd(), ProcessEnd::exited(2));
    EXPECT_THAT(process->errors(),
                HasSubstr((m_root / "etc/kovan/core-scenario.ini").string() + ": [search] seconds: "));
}

TEST_F(SimulatorProcessTest, EndsWithStatus2WhenTheNamedScenarioIsNotThere) {
    EXPECT_EQ(start({"--scenario", "/nowhere.ini"})->waitForEnd(), ProcessEnd::exited(2));
}

TEST_F(SimulatorProcessTest, PlaysTheBuiltInScenarioWithoutAFile) {
    const auto process = start();
    EXPECT_EQ(connect()->getCurrentVersion(), "1000");
}

TEST_F(SimulatorProcessTest, PlaysTheScenarioThatIsNamed) {
    m_root.write("another.ini", "[core]\nversion=3000\n");
    const auto process = start({"--scenario", (m_root / "another.ini").string()});
    EXPECT_EQ(connect()->getCurrentVersion(), "3000");
}

TEST_F(SimulatorProcessTest, EndsWithStatus0OnSigterm) {
    const auto process = start();
    connect();
    process->send(SIGTERM);
    EXPECT_EQ(process->waitForEnd(), ProcessEnd::exited(0));
}

TEST_F(SimulatorProcessTest, EndsWithoutClientsAfterTheIdleTimeOut) {
    const auto process = start({"--idle-timeout", "1"});
    connect();
    EXPECT_EQ(process->waitForEnd(), ProcessEnd::exited(0));
}

TEST_F(SimulatorProcessTest, RecordsACallBeforeItsReply) {
    const auto process = start();
    connect()->scheduleFactoryReset();
    EXPECT_THAT(m_root.read("var/log/kovan/core-calls.jsonl"), HasSubstr(R"("method":"scheduleFactoryReset")"));
}

TEST_F(SimulatorProcessTest, RepliesAndDies) {
    play("[fault getCurrentVersion]\ndie=after\n");
    const auto process = start();
    EXPECT_EQ(connect()->getCurrentVersion(), "1000");
    EXPECT_EQ(process->waitForEnd(), ProcessEnd::exited(3));
}

TEST_F(SimulatorProcessTest, DiesWithoutAReply) {
    play("[fault getCurrentVersion]\ndie=before\n");
    const auto process = start();
    EXPECT_THROW(connect()->getCurrentVersion(), RemoteObjectNotAccessible);
    EXPECT_EQ(process->waitForEnd(), ProcessEnd::exited(3));
}

TEST_F(SimulatorProcessTest, ServesATransactionOverItsOwnConnection) {
    play("[search]\nseconds=0\n");
    const auto process = start();
    const auto transaction = connect()->createTransaction({});
    ASSERT_NE(transaction, nullptr);
    transaction->startSearching("");
    EXPECT_EQ(transaction->getSearchProgress().result, Core::TRANSACTION_SUCCESS);
    EXPECT_TRUE(transaction->getSearchResult().version == std::string("1100"));
}

} // namespace
