// The effect of the debug file on the daemon, and that a bad one has none.
#include <boost/exception/diagnostic_information.hpp>
#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "DAXCommon/UserInterestExceptions.h"
#include "support/Corruption.h"
#include "support/DebugFile.h"
#include "support/WaitUntil.h"
#include "system/support/Desk.h"
#include "system/support/Scenarios.h"

namespace DAX::Tests {
namespace {

using namespace testing;
using namespace DAXCommon;
using namespace Service;

const std::string DEBUG_FILE = "mnt/systemrw/org.kovan.tv.dax/data/tv/DebugAndTestParameters.xml";

class DebugFileOfTheDaemon : public Test {
protected:
    DebugFileOfTheDaemon() { desk.play(QUICK); }

    void useFile(const std::map<std::string, std::string>& values) { desk.root.write(DEBUG_FILE, debugFile(values)); }

    // The parameters that the core gets with a new transaction.
    nlohmann::json parametersAtTheCore() {
        EXPECT_NE(startTransaction(), nullptr);
        for (const auto& call : desk.coreCalls()) {
            if (call.at("method") == "createTransaction") {
                return call.at("arguments").at("parameters");
            }
        }
        return {};
    }

    std::shared_ptr<IServiceTransaction> startTransaction() {
        manager = desk.connect();
        session = manager->getService(ServiceClientPriority(1), "client", ServiceTransactionType(0));
        return session->startNewTransaction(OTN);
    }

    // Checks that a file that cannot be read is reported by one line, and that the daemon works with what it has read
    // before.
    void expectOneLineAndService(const std::string& text) {
        desk.root.write(DEBUG_FILE, text);
        EXPECT_EQ(desk.connect()->getCurrentVersion(), "1000");
        EXPECT_EQ(desk.countMessages("Failed to load DebugAndTestParameters from " + (desk.root / DEBUG_FILE).string() +
                                     ": "),
                  1);
        EXPECT_EQ(desk.countMessages("Failed to open DebugAndTestParameters from "), 0);
    }

    Desk desk;
    std::unique_ptr<IServiceManager> manager;
    std::shared_ptr<IService> session;
};

TEST_F(DebugFileOfTheDaemon, CanHaveAnUpgradeCountAsDone) {
    useFile({{"emulateWasSuccessfulUpgrade", "1"}});
    EXPECT_EQ(parametersAtTheCore().at("wasAnySuccessfulUpgrade"), true);
}

TEST_F(DebugFileOfTheDaemon, WithoutTheSwitchLeavesItToTheSetting) {
    useFile({});
    EXPECT_EQ(parametersAtTheCore().at("wasAnySuccessfulUpgrade"), false);
    EXPECT_EQ(desk.countMessages("Failed to open DebugAndTestParameters from "), 0);
}

TEST_F(DebugFileOfTheDaemon, DoesNotHideTheSettingOfCellularConnections) {
    useFile({{"emulateWasSuccessfulUpgrade", "1"}});
    EXPECT_EQ(
        desk.run("kovanctl", {"setting", "set", "db/menu/support/softwareupdate/use_cellular_int", "int", "1"}).end,
        ProcessEnd::exited(0));
    const nlohmann::json parameters = parametersAtTheCore();
    EXPECT_EQ(parameters.at("isCellularConnectionAllowed"), true);
    EXPECT_EQ(parameters.at("wasAnySuccessfulUpgrade"), true);
}

TEST_F(DebugFileOfTheDaemon, IsReadOnceAtTheStart) {
    useFile({});
    EXPECT_EQ(desk.connect()->getCurrentVersion(), "1000");
    useFile({{"emulateWasSuccessfulUpgrade", "1"}});
    EXPECT_EQ(parametersAtTheCore().at("wasAnySuccessfulUpgrade"), false);
}

TEST_F(DebugFileOfTheDaemon, IsIgnoredInProduction) {
    desk.root.write("etc/kovan/device.ini", "[software]\nproduction=true\n");
    useFile({{"emulateWasSuccessfulUpgrade", "1"}, {"serviceTransactionStubScenarioPath", "/no/scenario"}});
    EXPECT_EQ(parametersAtTheCore().at("wasAnySuccessfulUpgrade"), false);
    EXPECT_EQ(desk.countMessages("We are in production mode. Will not load DebugAndTestParameters."), 1);
}

TEST_F(DebugFileOfTheDaemon, MayBeEmpty) {
    expectOneLineAndService("");
}

TEST_F(DebugFileOfTheDaemon, MayEndAnywhere) {
    const std::string whole = debugFile({{"emulateWasSuccessfulUpgrade", "1"}});
    expectOneLineAndService(whole.substr(0, whole.find("<customParams ")));
    EXPECT_EQ(parametersAtTheCore().at("wasAnySuccessfulUpgrade"), true);
}

TEST_F(DebugFileOfTheDaemon, MayEndBeforeTheSwitch) {
    const std::string whole = debugFile({{"emulateWasSuccessfulUpgrade", "1"}});
    expectOneLineAndService(whole.substr(0, whole.find("<emulateWasSuccessfulUpgrade>")));
    EXPECT_EQ(parametersAtTheCore().at("wasAnySuccessfulUpgrade"), false);
}

TEST_F(DebugFileOfTheDaemon, MayBeOfALaterVersion) {
    std::string text = debugFile({{"emulateWasSuccessfulUpgrade", "1"}});
    const std::string first = "version=\"1\">\n";
    expectOneLineAndService(text.replace(text.find(first), first.size(), "version=\"2\">\n"));
    EXPECT_EQ(parametersAtTheCore().at("wasAnySuccessfulUpgrade"), false);
}

TEST_F(DebugFileOfTheDaemon, MayHoldAValueOfTheWrongType) {
    expectOneLineAndService(debugFile({{"emulateWasSuccessfulUpgrade", "1"}, {"numberOfFailures", "many"}}));
    EXPECT_EQ(parametersAtTheCore().at("wasAnySuccessfulUpgrade"), true);
}

TEST_F(DebugFileOfTheDaemon, MayBeNoise) {
    expectOneLineAndService(noise(4096).front());
}

TEST_F(DebugFileOfTheDaemon, MayBeAFolder) {
    std::filesystem::create_directories(desk.root / DEBUG_FILE);
    EXPECT_EQ(desk.connect()->getCurrentVersion(), "1000");
    EXPECT_EQ(desk.countMessages("Failed to load DebugAndTestParameters from "), 1);
}

// --- A scenario instead of real transactions

class ScenarioOfTheDaemon : public DebugFileOfTheDaemon {
protected:
    ScenarioOfTheDaemon() { useFile({{"serviceTransactionStubScenarioPath", (desk.root / "scenario.xml").string()}}); }
};

TEST_F(ScenarioOfTheDaemon, EndsItWhereATransactionIsStartedAndTheBusStartsItAnew) {
    desk.root.write("scenario.xml", "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\" ?>\n"
                                    "<!DOCTYPE boost_serialization>\n"
                                    "<boost_serialization signature=\"serialization::archive\" version=\"18\">\n"
                                    "<searchingProgress class_id=\"0\" tracking_level=\"0\" version=\"0\">\n"
                                    "\t<workingTimeInSeconds>10</workingTimeInSeconds>\n");
    manager = desk.connect();
    manager->getCurrentVersion();
    const pid_t first = desk.daemon();
    EXPECT_THROW(startTransaction(), std::exception);
    EXPECT_TRUE(waitUntil([first] { return hasEnded(first); }));
    EXPECT_EQ(desk.countMessages("ASSERTION FAILED: this->is_initialized(), "), 1);
    EXPECT_THAT(desk.coreMethods(), Not(Contains("createTransaction")));

    EXPECT_EQ(desk.connect()->getCurrentVersion(), "1000");
    EXPECT_NE(desk.daemon(), first);
}

TEST_F(ScenarioOfTheDaemon, IsAnErrorToTheClientWhenItIsNotThere) {
    try {
        startTransaction();
        FAIL() << "nothing was thrown";
    } catch (const UserInterestExceptions::DAXUnknownException& exception) {
        EXPECT_THAT(boost::diagnostic_information(exception), HasSubstr("boost::archive::xml_archive_exception"));
    }
    const pid_t daemon = desk.daemon();
    EXPECT_EQ(manager->getCurrentVersion(), "1000");
    EXPECT_EQ(session->getClientPriority(), 1);
    EXPECT_EQ(desk.daemon(), daemon);
}

} // namespace
} // namespace DAX::Tests
