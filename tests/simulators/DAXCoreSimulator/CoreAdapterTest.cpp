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
        EXPECT_EQ("", answer.exception);
        return std::get<0>(decode<R>(answer.archive));
    }

    void openTransaction() {
        EXPECT_EQ("", callAsInFile("createTransaction").exception);
        EXPECT_EQ("", callAsInFile("helloMessage").exception);
    }

    // What a further transaction, which is granted, puts on standard error.
    std::string complaintOfATransaction() {
        testing::internal::CaptureStderr();
        EXPECT_EQ("", callAsInFile("createTransaction").exception);
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
    EXPECT_EQ(golden("core/getCurrentVersion.reply"), callAsInFile("getCurrentVersion").archive);
    EXPECT_EQ(golden("core/getSupportedUpgradeTypes.reply"), callAsInFile("getSupportedUpgradeTypes").archive);
    EXPECT_EQ(golden("core/scheduleFactoryReset.reply"), callAsInFile("scheduleFactoryReset").archive);
}

TEST_F(CoreAdapterTest, CreatesATransactionUnderItsOwnName) {
    EXPECT_EQ(encode(std::string("org.kovan.tv.dax.core.TV")), callAsInFile("createTransaction").archive);
}

TEST_F(CoreAdapterTest, RefusesATransactionByAnEmptyName) {
    play("[core]\nrefuse_transactions=true\n");
    EXPECT_EQ(encode(std::string()), callAsInFile("createTransaction").archive);
    EXPECT_EQ("", callAsInFile("helloMessage").exception);
    EXPECT_EQ(INVALIDATED, call("isSearchingPossible").exception);
}

TEST_F(CoreAdapterTest, WalksTheWholeRoad) {
    play(QUICK + "[search]\nupgrade_type=OTN\nkind=1\nscope=2\nupgrade_id=01ff\nversion=18.1\nupdate_info=<u/>\n"
                 "models=KV-55;KV 65\n");
    openTransaction();
    EXPECT_EQ(golden("core/isSearchingPossible.reply"), callAsInFile("isSearchingPossible").archive);
    EXPECT_EQ(golden("core/startSearching.reply"), callAsInFile("startSearching").archive);
    EXPECT_EQ(Core::TRANSACTION_SUCCESS, resultOf<Core::TransactionProgress>("getSearchProgress").result);
    EXPECT_EQ(golden("core/getSearchResult.reply"), callAsInFile("getSearchResult").archive);
    EXPECT_EQ(golden("core/getModelsSearchResult.reply"), callAsInFile("getModelsSearchResult").archive);
    EXPECT_EQ(golden("core/startInstallation.reply"), callAsInFile("startInstallation").archive);
    EXPECT_EQ(golden("core/getInstallationProgress.reply"), callAsInFile("getInstallationProgress").archive);
    EXPECT_EQ(golden("core/startFinalization.reply"), callAsInFile("startFinalization").archive);
    EXPECT_EQ(Core::TRANSACTION_SUCCESS, resultOf<Core::TransactionProgress>("getFinalizationProgress").result);
}

TEST_F(CoreAdapterTest, SearchesForModelsAsForAnUpgrade) {
    openTransaction();
    EXPECT_EQ("", callAsInFile("startModelsSearching").archive);
    EXPECT_EQ(Core::TRANSACTION_SUCCESS, resultOf<Core::TransactionProgress>("getSearchProgress").result);
}

TEST_F(CoreAdapterTest, LetsNobodyUseATransactionBeforeTheHello) {
    callAsInFile("createTransaction");
    EXPECT_EQ(INVALIDATED, call("startSearching", golden("core/startSearching.request")).exception);
}

TEST_F(CoreAdapterTest, LetsOnlyTheConnectionOfTheHelloUseTheTransaction) {
    openTransaction();
    const Answer refused = call("isSearchingPossible", NO_ARGUMENTS, ":1.3");
    EXPECT_EQ(INVALIDATED, refused.exception);
    EXPECT_THAT(refused.archive, HasSubstr("There is no transaction of :1.3."));
    EXPECT_EQ("", call("isSearchingPossible").exception);
}

TEST_F(CoreAdapterTest, IgnoresAHelloForAnotherProxy) {
    callAsInFile("createTransaction");
    EXPECT_EQ("", call("helloMessage", encode(std::string("Proxy-9"))).exception);
    EXPECT_EQ(INVALIDATED, call("isSearchingPossible").exception);
}

TEST_F(CoreAdapterTest, EndsTheTransactionThatIsCancelled) {
    openTransaction();
    EXPECT_EQ("", callAsInFile("cancelCoreTransaction").exception);
    EXPECT_EQ(INVALIDATED, call("isSearchingPossible").exception);
    EXPECT_EQ(INVALIDATED, callAsInFile("cancelCoreTransaction").exception);
}

TEST_F(CoreAdapterTest, ForgetsTheEarlierTransactionWithANewOne) {
    openTransaction();
    callAsInFile("createTransaction");
    EXPECT_EQ(INVALIDATED, call("isSearchingPossible").exception);
}

TEST_F(CoreAdapterTest, AnswersAnUnknownMethodAsTheServiceDoes) {
    const Answer answer = call("getService");
    EXPECT_EQ(UNKNOWN, answer.exception);
    EXPECT_THAT(answer.archive, HasSubstr("Unknown method: getService"));
}

TEST_F(CoreAdapterTest, AnswersArgumentsThatCannotBeReadWithAnException) {
    EXPECT_EQ(UNKNOWN, call("createTransaction", "").exception);
    EXPECT_EQ(UNKNOWN, call("createTransaction", NO_ARGUMENTS).exception);
}

TEST_F(CoreAdapterTest, ReadsTheScenarioAnewWithEachTransaction) {
    EXPECT_EQ("1000", resultOf<std::string>("getCurrentVersion"));
    play("[core]\nversion=2000\n");
    EXPECT_EQ("1000", resultOf<std::string>("getCurrentVersion"));
    callAsInFile("createTransaction");
    EXPECT_EQ("2000", resultOf<std::string>("getCurrentVersion"));
}

TEST_F(CoreAdapterTest, GoesOnWithTheEarlierScenarioWhenANewOneIsBrokenAndSaysSoOnce) {
    openTransaction();
    play("[core]\nversion=2000\nspeed=1\n");
    EXPECT_EQ("DAXCoreSimulator: " + (m_root / "scenario.ini").string() +
                  ": [core] speed: there is no such key; the earlier scenario goes on\n",
              complaintOfATransaction());
    EXPECT_EQ("", complaintOfATransaction());
    EXPECT_EQ("1000", resultOf<std::string>("getCurrentVersion"));
}

TEST_F(CoreAdapterTest, SaysAgainWhatIsBrokenWhenItIsAnotherThingOrWasMendedInBetween) {
    openTransaction();
    play("[core]\nspeed=1\n");
    EXPECT_THAT(complaintOfATransaction(), HasSubstr("[core] speed: "));
    play("[core]\nheight=1\n");
    EXPECT_THAT(complaintOfATransaction(), HasSubstr("[core] height: "));
    play("[core]\nversion=2000\n");
    EXPECT_EQ("", complaintOfATransaction());
    play("[core]\nheight=1\n");
    EXPECT_THAT(complaintOfATransaction(), HasSubstr("[core] height: "));
    EXPECT_EQ("2000", resultOf<std::string>("getCurrentVersion"));
}

TEST_F(CoreAdapterTest, PlaysWhatIsBuiltInWhenTheScenarioIsGone) {
    play("[core]\nversion=2000\n");
    EXPECT_EQ("2000", resultOf<std::string>("getCurrentVersion"));
    std::filesystem::remove(m_root / "scenario.ini");
    EXPECT_EQ("", complaintOfATransaction());
    EXPECT_EQ("1000", resultOf<std::string>("getCurrentVersion"));
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
    EXPECT_EQ("CNetworkTransferError", answer.exception);
    const auto fields = decode<std::string, std::string>(answer.archive);
    EXPECT_EQ("E-42", std::get<0>(fields));
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
    EXPECT_EQ("CWrongKeys", callAsInFile("startSearching").exception);
    EXPECT_EQ(Core::TRANSACTION_UNDEFINED, resultOf<Core::TransactionProgress>("getSearchProgress").result);
}

TEST_F(CoreAdapterTest, StrikesAtTheNthCallAlone) {
    play("[fault getCurrentVersion]\ncall=2\nexception=CWrongKeys\n");
    EXPECT_EQ("", call("getCurrentVersion").exception);
    EXPECT_EQ("CWrongKeys", call("getCurrentVersion").exception);
    EXPECT_EQ("", call("getCurrentVersion").exception);
}

TEST_F(CoreAdapterTest, StallsForTheTimeOfAFault) {
    play("[fault getCurrentVersion]\nstall_seconds=0.2\n");
    adapter();
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ("", call("getCurrentVersion").exception);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(200));
}

TEST_F(CoreAdapterTest, LeavesTheThirdArrayEmptyWhenAFaultSaysSo) {
    play("[fault getCurrentVersion]\nempty_reply=true\n");
    EXPECT_EQ("", call("getCurrentVersion").archive);
}

TEST_F(CoreAdapterTest, IsToDieBehindTheReplyWhenAFaultSaysSo) {
    play("[fault getCurrentVersion]\ndie=after\ncall=2\n");
    call("getCurrentVersion");
    EXPECT_FALSE(adapter().isToDie());
    EXPECT_EQ("", call("getCurrentVersion").exception);
    EXPECT_TRUE(adapter().isToDie());
}

TEST_F(CoreAdapterTest, MayStallAndThrowAndDieBehindTheReplyAtOnce) {
    play("[fault getCurrentVersion]\nstall_seconds=0.1\nexception=CWrongKeys\nempty_reply=true\ndie=after\n");
    adapter();
    const auto start = std::chrono::steady_clock::now();
    const Answer answer = call("getCurrentVersion");
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(100));
    EXPECT_EQ("CWrongKeys", answer.exception);
    EXPECT_NE("", answer.archive);
    EXPECT_TRUE(adapter().isToDie());
}

TEST_F(CoreAdapterTest, CountsTheCallsOfEachMethodByItself) {
    play("[fault getCurrentVersion]\ncall=2\nexception=CWrongKeys\n");
    EXPECT_EQ("", call("getCurrentVersion").exception);
    EXPECT_EQ("", call("getSupportedUpgradeTypes").exception);
    EXPECT_EQ("CWrongKeys", call("getCurrentVersion").exception);
}

using CoreAdapterDeathTest = CoreAdapterTest;

TEST_F(CoreAdapterDeathTest, DiesBeforeTheReplyWithTheCallOnRecord) {
    play("[fault getCurrentVersion]\ndie=before\n");
    adapter();
    EXPECT_EXIT(call("getCurrentVersion"), testing::ExitedWithCode(CoreAdapter::DEATH_STATUS), "");
    ASSERT_EQ(1U, calls().size());
    EXPECT_EQ("getCurrentVersion", calls()[0]["method"]);
}

TEST_F(CoreAdapterTest, RecordsMethodSenderAndArguments) {
    openTransaction();
    callAsInFile("startSearching");
    callAsInFile("startInstallation");
    callAsInFile("startFinalization");
    callAsInFile("cancelCoreTransaction");
    std::vector<std::string> records;
    for (json call : calls()) {
        EXPECT_EQ(":1.2", call["sender"]);
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
        EXPECT_EQ("", call(method).exception) << method;
        EXPECT_EQ(method, calls().back()["method"]);
        EXPECT_EQ("{}", calls().back()["arguments"].dump()) << method;
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
    EXPECT_EQ(R"({"flag":false,"items":[],"upgradeId":null})", calls().back()["arguments"].dump());
}

TEST_F(CoreAdapterTest, RecordsCallsThatItCannotServe) {
    call("getService");
    call("helloMessage", "");
    ASSERT_EQ(2U, calls().size());
    EXPECT_EQ("getService", calls()[0]["method"]);
    EXPECT_TRUE(calls()[0]["arguments"].is_null());
    EXPECT_EQ("helloMessage", calls()[1]["method"]);
    EXPECT_TRUE(calls()[1]["arguments"].is_null());
}

TEST_F(CoreAdapterTest, RecordsACallOnceWhenItFails) {
    callAsInFile("startInstallation");
    ASSERT_EQ(1U, calls().size());
    EXPECT_EQ(R"({"items":["a","b c"]})", calls()[0]["arguments"].dump());
}

TEST_F(CoreAdapterTest, RecordsTextsThatAreNoUnicode) {
    openTransaction();
    EXPECT_EQ("", call("startSearching", encode(std::string("\xFF\n\""))).exception);
    EXPECT_EQ("\xEF\xBF\xBD\n\"", calls().back()["arguments"]["searchParameter"]);
}

TEST_F(CoreAdapterTest, SetsAFullRecordAside) {
    const auto record = m_root / "var/log/core-calls.jsonl";
    m_root.write("var/log/core-calls.jsonl", "");
    std::filesystem::resize_file(record, std::uintmax_t(16) << 20U);
    m_root.write("var/log/core-calls.jsonl.1", "an older one");
    EXPECT_EQ("", call("getCurrentVersion").exception);
    ASSERT_EQ(1U, calls().size());
    EXPECT_EQ("getCurrentVersion", calls()[0]["method"]);
    EXPECT_EQ(std::uintmax_t(16) << 20U, std::filesystem::file_size(record.string() + ".1"));
}

TEST_F(CoreAdapterTest, AnswersWithAnExceptionWhenTheRecordCannotBeWritten) {
    std::filesystem::create_directory(m_root / "var/log/core-calls.jsonl");
    EXPECT_EQ(UNKNOWN, call("getCurrentVersion").exception);
    EXPECT_EQ(UNKNOWN, call("getService").exception);
}

} // namespace
