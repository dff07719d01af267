#include "DAXCoreSimulator/CoreAdapter.h"

#include <chrono>
#include <filesystem>

#include <boost/serialization/list.hpp>
#include <boost/serialization/optional.hpp>
#include <boost/serialization/set.hpp>
#include <boost/serialization/string.hpp>
#include <boost/serialization/vector.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "support/RecordEquality.h"
#include "support/SampleRecords.h"
#include "support/TemporaryRoot.h"
#include "support/WireGoldens.h"

using namespace DAX;
using namespace DAX::Tests;
using namespace DAXCoreSimulator;
using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

namespace {

const std::string NO_ARGUMENTS = "22 serialization::archive 18";
const std::string QUICK = "[search]\nseconds=0\n[installation]\nseconds=0\n[finalization]\nseconds=0\n";
const std::string UNKNOWN = "DAXUnknownException";
const std::string INVALIDATED = "TransactionInvalidatedException";

struct Answer {
    std::string exception; // empty for a normal reply
    std::string archive;
};

class CoreAdapterTest : public testing::Test {
protected:
    CoreAdapterTest() { play(QUICK); }

    void play(const std::string& scenario) { m_root.write("scenario.ini", scenario); }

    CoreAdapter& adapter() {
        if (!m_adapter) {
            m_core.emplace((m_root / "scenario.ini").string());
            m_adapter.emplace(*m_core, m_journal);
        }
        return *m_adapter;
    }

    Answer call(const std::string& method, const std::string& parameters = NO_ARGUMENTS,
                const std::string& sender = ":1.2") {
        std::stringstream in(parameters);
        std::stringstream out;
        std::string exception;
        const bool isNormal = adapter().handleRequest(method, in, out, exception, sender.c_str());
        EXPECT_EQ(isNormal, exception.empty());
        return {exception, out.str()};
    }
    Answer callAsInFile(const std::string& method) { return call(method, golden("core/" + method + ".request")); }

    template <class R>
    R resultOf(const std::string& method) {
        const Answer answer = call(method);
        EXPECT_EQ(answer.exception, "");
        return std::get<0>(decode<R>(answer.archive));
    }

    void openTransaction() {
        EXPECT_EQ(callAsInFile("createTransaction").exception, "");
        EXPECT_EQ(callAsInFile("helloMessage").exception, "");
    }

    // Gets a further transaction granted and returns what that writes to standard error.
    std::string complaintOfATransaction() {
        testing::internal::CaptureStderr();
        EXPECT_EQ(callAsInFile("createTransaction").exception, "");
        return testing::internal::GetCapturedStderr();
    }

    std::vector<json> calls() const {
        std::istringstream lines(m_root.read("var/log/core-calls.jsonl"));
        std::vector<json> all;
        for (std::string line; std::getline(lines, line);) {
            all.push_back(json::parse(line));
        }
        return all;
    }

    TemporaryRoot m_root;
    const CallJournal m_journal{(m_root / "var/log/core-calls.jsonl").string()};

private:
    boost::optional<SimulatedCore> m_core;
    boost::optional<CoreAdapter> m_adapter;
};

TEST_F(CoreAdapterTest, AnnouncesItsSixteenMethodsSortedByName) {
    std::stringstream document;
    adapter().introspect(document);
    std::vector<std::string> methods;
    bool isOfTheCore = false;
    for (std::string line; std::getline(document, line);) {
        if (line.find("<interface name=") != std::string::npos) {
            isOfTheCore = line == "  <interface name=\"org.kovan.tv.dax.core.icoreTV\">";
        } else if (const auto name = line.find("<method name=\""); isOfTheCore && name != std::string::npos) {
            methods.push_back(line.substr(name + 14, line.rfind('"') - name - 14));
        }
    }
    EXPECT_THAT(methods, ElementsAre("cancelCoreTransaction", "createTransaction", "getCurrentVersion",
                                     "getFinalizationProgress", "getInstallationProgress", "getModelsSearchResult",
                                     "getSearchProgress", "getSearchResult", "getSupportedUpgradeTypes", "helloMessage",
                                     "isSearchingPossible", "scheduleFactoryReset", "startFinalization",
                                     "startInstallation", "startModelsSearching", "startSearching"));
}

TEST_F(CoreAdapterTest, TellsWhatTheScenarioSaysOfTheCore) {
    play("[core]\nversion=17.037.0\nsupported_types=OTN;POSTPONE\n");
    EXPECT_EQ(callAsInFile("getCurrentVersion").archive, golden("core/getCurrentVersion.reply"));
    EXPECT_EQ(callAsInFile("getSupportedUpgradeTypes").archive, golden("core/getSupportedUpgradeTypes.reply"));
    EXPECT_EQ(callAsInFile("scheduleFactoryReset").archive, golden("core/scheduleFactoryReset.reply"));
}

TEST_F(CoreAdapterTest, CreatesATransactionUnderItsOwnName) {
    EXPECT_EQ(encode(std::string("org.kovan.tv.dax.core.TV")), callAsInFile("createTransaction").archive);
}

TEST_F(CoreAdapterTest, RefusesATransactionByAnEmptyName) {
    play("[core]\nrefuse_transactions=true\n");
    EXPECT_EQ(encode(std::string()), callAsInFile("createTransaction").archive);
    EXPECT_EQ(callAsInFile("helloMessage").exception, "");
    EXPECT_EQ(call("isSearchingPossible").exception, INVALIDATED);
}

TEST_F(CoreAdapterTest, WalksTheWholeRoad) {
    play(QUICK + "[search]\nupgrade_type=OTN\nkind=1\nscope=2\nupgrade_id=01ff\nversion=18.1\nupdate_info=<u/>\n"
                 "models=KV-55;KV 65\n");
    openTransaction();
    EXPECT_EQ(callAsInFile("isSearchingPossible").archive, golden("core/isSearchingPossible.reply"));
    EXPECT_EQ(callAsInFile("startSearching").archive, golden("core/startSearching.reply"));
    EXPECT_EQ(resultOf<Core::TransactionProgress>("getSearchProgress").result, Core::TRANSACTION_SUCCESS);
    EXPECT_EQ(callAsInFile("getSearchResult").archive, golden("core/getSearchResult.reply"));
    EXPECT_EQ(callAsInFile("getModelsSearchResult").archive, golden("core/getModelsSearchResult.reply"));
    EXPECT_EQ(callAsInFile("startInstallation").archive, golden("core/startInstallation.reply"));
    EXPECT_EQ(callAsInFile("getInstallationProgress").archive, golden("core/getInstallationProgress.reply"));
    EXPECT_EQ(callAsInFile("startFinalization").archive, golden("core/startFinalization.reply"));
    EXPECT_EQ(resultOf<Core::TransactionProgress>("getFinalizationProgress").result, Core::TRANSACTION_SUCCESS);
}

TEST_F(CoreAdapterTest, SearchesForModelsAsForAnUpgrade) {
    openTransaction();
    EXPECT_EQ(callAsInFile("startModelsSearching").archive, "");
    EXPECT_EQ(resultOf<Core::TransactionProgress>("getSearchProgress").result, Core::TRANSACTION_SUCCESS);
}

TEST_F(CoreAdapterTest, LetsNobodyUseATransactionBeforeTheHello) {
    callAsInFile("createTransaction");
    EXPECT_EQ(call("startSearching", golden("core/startSearching.request")).exception, INVALIDATED);
}

TEST_F(CoreAdapterTest, LetsOnlyTheConnectionOfTheHelloUseTheTransaction) {
    openTransaction();
    const Answer refused = call("isSearchingPossible", NO_ARGUMENTS, ":1.3");
    EXPECT_EQ(refused.exception, INVALIDATED);
    EXPECT_THAT(refused.archive, HasSubstr("There is no transaction of :1.3."));
    EXPECT_EQ(call("isSearchingPossible").exception, "");
}

TEST_F(CoreAdapterTest, IgnoresAHelloForAnotherProxy) {
    callAsInFile("createTransaction");
    EXPECT_EQ(call("helloMessage", encode(std::string("Proxy-9"))).exception, "");
    EXPECT_EQ(call("isSearchingPossible").exception, INVALIDATED);
}

TEST_F(CoreAdapterTest, EndsTheTransactionThatIsCancelled) {
    openTransaction();
    EXPECT_EQ(callAsInFile("cancelCoreTransaction").exception, "");
    EXPECT_EQ(call("isSearchingPossible").exception, INVALIDATED);
    EXPECT_EQ(callAsInFile("cancelCoreTransaction").exception, INVALIDATED);
}

TEST_F(CoreAdapterTest, ForgetsTheEarlierTransactionWithANewOne) {
    openTransaction();
    callAsInFile("createTransaction");
    EXPECT_EQ(call("isSearchingPossible").exception, INVALIDATED);
}

TEST_F(CoreAdapterTest, AnswersAnUnknownMethodAsTheServiceDoes) {
    const Answer answer = call("getService");
    EXPECT_EQ(answer.exception, UNKNOWN);
    EXPECT_THAT(answer.archive, HasSubstr("Unknown method: getService"));
}

TEST_F(CoreAdapterTest, AnswersArgumentsThatCannotBeReadWithAnException) {
    EXPECT_EQ(call("createTransaction", "").exception, UNKNOWN);
    EXPECT_EQ(call("createTransaction", NO_ARGUMENTS).exception, UNKNOWN);
}

TEST_F(CoreAdapterTest, ReadsTheScenarioAnewWithEachTransaction) {
    EXPECT_EQ(resultOf<std::string>("getCurrentVersion"), "1000");
    play("[core]\nversion=2000\n");
    EXPECT_EQ(resultOf<std::string>("getCurrentVersion"), "1000");
    callAsInFile("createTransaction");
    EXPECT_EQ(resultOf<std::string>("getCurrentVersion"), "2000");
}

TEST_F(CoreAdapterTest, GoesOnWithTheEarlierScenarioWhenANewOneIsBrokenAndSaysSoOnce) {
    openTransaction();
    play("[core]\nversion=2000\nspeed=1\n");
    EXPECT_EQ(complaintOfATransaction(), "DAXCoreSimulator: " + (m_root / "scenario.ini").string() +
                                             ": [core] speed: there is no such key; the earlier scenario goes on\n");
    EXPECT_EQ(complaintOfATransaction(), "");
    EXPECT_EQ(resultOf<std::string>("getCurrentVersion"), "1000");
}

TEST_F(CoreAdapterTest, SaysAgainWhatIsBrokenWhenItIsAnotherThingOrWasMendedInBetween) {
    openTransaction();
    play("[core]\nspeed=1\n");
    EXPECT_THAT(complaintOfATransaction(), HasSubstr("[core] speed: "));
    play("[core]\nheight=1\n");
    EXPECT_THAT(complaintOfATransaction(), HasSubstr("[core] height: "));
    play("[core]\nversion=2000\n");
    EXPECT_EQ(complaintOfATransaction(), "");
    play("[core]\nheight=1\n");
    EXPECT_THAT(complaintOfATransaction(), HasSubstr("[core] height: "));
    EXPECT_EQ(resultOf<std::string>("getCurrentVersion"), "2000");
}

TEST_F(CoreAdapterTest, PlaysWhatIsBuiltInWhenTheScenarioIsGone) {
    play("[core]\nversion=2000\n");
    EXPECT_EQ(resultOf<std::string>("getCurrentVersion"), "2000");
    std::filesystem::remove(m_root / "scenario.ini");
    EXPECT_EQ(complaintOfATransaction(), "");
    EXPECT_EQ(resultOf<std::string>("getCurrentVersion"), "1000");
}

TEST_F(CoreAdapterTest, ComplainsOfAScenarioThatCannotBeLookedAt) {
    openTransaction();
    std::filesystem::remove(m_root / "scenario.ini");
    std::filesystem::create_symlink("scenario.ini", m_root / "scenario.ini");
    EXPECT_THAT(complaintOfATransaction(),
                testing::StartsWith("DAXCoreSimulator: " + (m_root / "scenario.ini").string() + ": "));
}

TEST_F(CoreAdapterTest, ThrowsTheExceptionOfAFault) {
    play("[fault getCurrentVersion]\nexception=CNetworkTransferError\nsupport_code=E-42\ntext=No answer.\n");
    const Answer answer = call("getCurrentVersion");
    EXPECT_EQ(answer.exception, "CNetworkTransferError");
    const auto fields = decode<std::string, std::string>(answer.archive);
    EXPECT_EQ(std::get<0>(fields), "E-42");
    EXPECT_THAT(std::get<1>(fields), HasSubstr("No answer."));
}

TEST_F(CoreAdapterTest, ThrowsEachExceptionUnderItsOwnName) {
    for (const char* const name :
         {"TransactionInvalidatedException", "CUpdateFailed", "CUSBReadError", "CNetworkTransferError",
          "CUSBImageCorrupted", "CUSBDecryptionError", "CImageCorrupted", "CWrongKeys", "CImageLacksIntegrity",
          "ExternalLockDenied", "CWildcardImageNotAllowedException", "InsufficientRWStorageSpace",
          "DAXUnknownException"}) {
        play(std::string("[fault scheduleFactoryReset]\nexception=") + name + "\n");
        callAsInFile("createTransaction");
        EXPECT_EQ(name, call("scheduleFactoryReset").exception);
    }
}

TEST_F(CoreAdapterTest, HasNoEffectWhenAFaultThrows) {
    play(QUICK + "[fault startSearching]\nexception=CWrongKeys\n");
    openTransaction();
    EXPECT_EQ(callAsInFile("startSearching").exception, "CWrongKeys");
    EXPECT_EQ(resultOf<Core::TransactionProgress>("getSearchProgress").result, Core::TRANSACTION_UNDEFINED);
}

TEST_F(CoreAdapterTest, StrikesAtTheNthCallAlone) {
    play("[fault getCurrentVersion]\ncall=2\nexception=CWrongKeys\n");
    EXPECT_EQ(call("getCurrentVersion").exception, "");
    EXPECT_EQ(call("getCurrentVersion").exception, "CWrongKeys");
    EXPECT_EQ(call("getCurrentVersion").exception, "");
}

TEST_F(CoreAdapterTest, StallsForTheTimeOfAFault) {
    play("[fault getCurrentVersion]\nstall_seconds=0.2\n");
    adapter();
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(call("getCurrentVersion").exception, "");
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(200));
}

TEST_F(CoreAdapterTest, LeavesTheThirdArrayEmptyWhenAFaultSaysSo) {
    play("[fault getCurrentVersion]\nempty_reply=true\n");
    EXPECT_EQ(call("getCurrentVersion").archive, "");
}

TEST_F(CoreAdapterTest, IsToDieBehindTheReplyWhenAFaultSaysSo) {
    play("[fault getCurrentVersion]\ndie=after\ncall=2\n");
    call("getCurrentVersion");
    EXPECT_FALSE(adapter().isToDie());
    EXPECT_EQ(call("getCurrentVersion").exception, "");
    EXPECT_TRUE(adapter().isToDie());
}

TEST_F(CoreAdapterTest, MayStallAndThrowAndDieBehindTheReplyAtOnce) {
    play("[fault getCurrentVersion]\nstall_seconds=0.1\nexception=CWrongKeys\nempty_reply=true\ndie=after\n");
    adapter();
    const auto start = std::chrono::steady_clock::now();
    const Answer answer = call("getCurrentVersion");
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(100));
    EXPECT_EQ(answer.exception, "CWrongKeys");
    EXPECT_NE(answer.archive, "");
    EXPECT_TRUE(adapter().isToDie());
}

TEST_F(CoreAdapterTest, CountsTheCallsOfEachMethodByItself) {
    play("[fault getCurrentVersion]\ncall=2\nexception=CWrongKeys\n");
    EXPECT_EQ(call("getCurrentVersion").exception, "");
    EXPECT_EQ(call("getSupportedUpgradeTypes").exception, "");
    EXPECT_EQ(call("getCurrentVersion").exception, "CWrongKeys");
}

using CoreAdapterDeathTest = CoreAdapterTest;

TEST_F(CoreAdapterDeathTest, DiesBeforeTheReplyWithTheCallOnRecord) {
    play("[fault getCurrentVersion]\ndie=before\n");
    adapter();
    EXPECT_EXIT(call("getCurrentVersion"), testing::ExitedWithCode(CoreAdapter::DEATH_STATUS), "");
    ASSERT_EQ(calls().size(), 1U);
    EXPECT_EQ(calls()[0]["method"], "getCurrentVersion");
}

TEST_F(CoreAdapterTest, RecordsMethodSenderAndArguments) {
    openTransaction();
    callAsInFile("startSearching");
    callAsInFile("startInstallation");
    callAsInFile("startFinalization");
    callAsInFile("cancelCoreTransaction");
    std::vector<std::string> records;
    for (json call : calls()) {
        EXPECT_EQ(call["sender"], ":1.2");
        records.push_back(call["method"].get<std::string>() + " " + call["arguments"].dump());
    }
    EXPECT_THAT(
        records,
        ElementsAre(R"(createTransaction {"connectionId":":1.2","parameters":{"isCellularConnectionAllowed":true,)"
                    R"("transactionType":2,"upgradeType":2,"wasAnySuccessfulUpgrade":false},"proxyId":"Proxy-2"})",
                    R"(helloMessage {"proxyId":"Proxy-2"})", R"(startSearching {"searchParameter":""})",
                    R"(startInstallation {"items":["a","b c"]})",
                    R"(startFinalization {"flag":true,"items":["a"],"upgradeId":"01ff"})",
                    R"(cancelCoreTransaction {"reason":"user's wish"})"));
}

TEST_F(CoreAdapterTest, RecordsAnEmptyObjectForEachMethodWithoutArguments) {
    openTransaction();
    for (const std::string method :
         {"getCurrentVersion", "getSupportedUpgradeTypes", "scheduleFactoryReset", "isSearchingPossible",
          "startModelsSearching", "getSearchProgress", "getSearchResult", "getModelsSearchResult",
          "getInstallationProgress", "getFinalizationProgress"}) {
        EXPECT_EQ(call(method).exception, "") << method;
        EXPECT_EQ(method, calls().back()["method"]);
        EXPECT_EQ(calls().back()["arguments"].dump(), "{}") << method;
    }
}

TEST_F(CoreAdapterTest, RecordsTheTimeInUTC) {
    call("getCurrentVersion");
    EXPECT_THAT(calls().back()["time"].get<std::string>(),
                testing::MatchesRegex("[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9:]{8}(\\.[0-9]{6})?Z"));
}

TEST_F(CoreAdapterTest, RecordsTheAbsenceOfAnUpgradeIdentifier) {
    openTransaction();
    call("startFinalization", encode(std::set<std::string>(), boost::optional<std::vector<unsigned char>>(), false));
    EXPECT_EQ(calls().back()["arguments"].dump(), R"({"flag":false,"items":[],"upgradeId":null})");
}

TEST_F(CoreAdapterTest, RecordsCallsThatItCannotServe) {
    call("getService");
    call("helloMessage", "");
    ASSERT_EQ(calls().size(), 2U);
    EXPECT_EQ(calls()[0]["method"], "getService");
    EXPECT_TRUE(calls()[0]["arguments"].is_null());
    EXPECT_EQ(calls()[1]["method"], "helloMessage");
    EXPECT_TRUE(calls()[1]["arguments"].is_null());
}

TEST_F(CoreAdapterTest, RecordsACallOnceWhenItFails) {
    callAsInFile("startInstallation");
    ASSERT_EQ(calls().size(), 1U);
    EXPECT_EQ(calls()[0]["arguments"].dump(), R"({"items":["a","b c"]})");
}

TEST_F(CoreAdapterTest, RecordsTextsThatAreNoUnicode) {
    openTransaction();
    EXPECT_EQ(call("startSearching", encode(std::string("\xFF\n\""))).exception, "");
    EXPECT_EQ(calls().back()["arguments"]["searchParameter"], "\xEF\xBF\xBD\n\"");
}

TEST_F(CoreAdapterTest, SetsAFullRecordAside) {
    const auto record = m_root / "var/log/core-calls.jsonl";
    m_root.write("var/log/core-calls.jsonl", "");
    std::filesystem::resize_file(record, std::uintmax_t(16) << 20U);
    m_root.write("var/log/core-calls.jsonl.1", "an older one");
    EXPECT_EQ(call("getCurrentVersion").exception, "");
    ASSERT_EQ(calls().size(), 1U);
    EXPECT_EQ(calls()[0]["method"], "getCurrentVersion");
    EXPECT_EQ(std::uintmax_t(16) << 20U, std::filesystem::file_size(record.string() + ".1"));
}

TEST_F(CoreAdapterTest, AnswersWithAnExceptionWhenTheRecordCannotBeWritten) {
    std::filesystem::create_directory(m_root / "var/log/core-calls.jsonl");
    EXPECT_EQ(call("getCurrentVersion").exception, UNKNOWN);
    EXPECT_EQ(call("getService").exception, UNKNOWN);
}

} // namespace
