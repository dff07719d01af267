#include "DAXCoreSimulator/Scenario.h"

#include <fstream>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/TemporaryRoot.h"

using namespace DAX;
using namespace DAX::Tests;
using namespace DAXCoreSimulator;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class ScenarioTest : public testing::Test {
protected:
    Scenario read(const std::string& text) const {
        m_root.write("scenario.ini", text);
        return readScenario(path());
    }

    // The text of the refusal after the path of the file.
    std::string refusalOf(const std::string& text) const {
        try {
            read(text);
        } catch (const ScenarioError& error) {
            const std::string what = error.what();
            EXPECT_EQ(what.substr(0, path().size() + 2), path() + ": ");
            return what.substr(path().size() + 2);
        }
        return "it was read";
    }

    std::string path() const { return (m_root / "scenario.ini").string(); }

    TemporaryRoot m_root;
};

void expectBuiltIn(const Scenario& scenario) {
    EXPECT_EQ(scenario.version, "1000");
    EXPECT_THAT(scenario.supportedTypes, ElementsAre(DAXCommon::OTA, DAXCommon::OTN, DAXCommon::USB));
    EXPECT_FALSE(scenario.refusesTransactions);
    EXPECT_TRUE(scenario.searchingPossible == boost::optional<bool>(true));
    EXPECT_EQ(scenario.search.seconds, 1);
    EXPECT_EQ(scenario.installation.seconds, 2);
    EXPECT_EQ(scenario.finalization.seconds, 1);
    EXPECT_TRUE(scenario.search.succeeds && scenario.installation.succeeds && scenario.finalization.succeeds);
    EXPECT_EQ(scenario.found.upgradeType, DAXCommon::OTN);
    EXPECT_EQ(scenario.found.kind, DAXCommon::UPGRADE_KIND_REGULAR);
    EXPECT_EQ(scenario.found.scope, 2);
    EXPECT_THAT(scenario.found.upgradeId, ElementsAre(0x0d, 0xa5));
    EXPECT_TRUE(scenario.found.version == std::string("1100"));
    EXPECT_EQ(std::string(scenario.found.updateInfo.begin(), scenario.found.updateInfo.end()),
              "<update><version>1100</version></update>");
    EXPECT_THAT(scenario.models, ElementsAre("KV-55", "KV-65"));
    EXPECT_THAT(scenario.faults, IsEmpty());
}

TEST_F(ScenarioTest, HasEverythingBuiltIn) {
    expectBuiltIn(Scenario());
}

TEST_F(ScenarioTest, OfAnEmptyFileIsTheBuiltInOne) {
    expectBuiltIn(read(""));
}

TEST_F(ScenarioTest, OfTheExampleIsTheBuiltInOne) {
    expectBuiltIn(readScenario(EXAMPLE_SCENARIO));
}

TEST_F(ScenarioTest, OfTheExampleHasAFaultThatCanBeSwitchedOn) {
    std::ifstream example(EXAMPLE_SCENARIO);
    std::string text;
    for (std::string line; std::getline(example, line);) {
        text += (line.rfind("# ", 0) != 0 && line.rfind('#', 0) == 0 ? line.substr(1) : line) + "\n";
    }
    const Fault fault = read(text).faults.at("startInstallation");
    EXPECT_TRUE(fault.call == 1);
    EXPECT_EQ(fault.stallSeconds, 5);
    EXPECT_EQ(fault.death, Fault::Death::BEFORE_REPLY);
    EXPECT_EQ(fault.exception, "CNetworkTransferError");
    EXPECT_EQ(fault.supportCode, "E-42");
    EXPECT_EQ(fault.text, "The server does not answer.");
    EXPECT_TRUE(fault.emptyReply);
}

TEST_F(ScenarioTest, ReadsTheCore) {
    const Scenario scenario = read("[core]\nversion=17.037\nsupported_types=POSTPONE;UNDEFINED\n"
                                   "refuse_transactions=true\n");
    EXPECT_EQ(scenario.version, "17.037");
    EXPECT_THAT(scenario.supportedTypes, ElementsAre(DAXCommon::POSTPONE, DAXCommon::UNDEFINED));
    EXPECT_TRUE(scenario.refusesTransactions);
}

TEST_F(ScenarioTest, ReadsThatNothingIsSupported) {
    EXPECT_THAT(read("[core]\nsupported_types=\n").supportedTypes, IsEmpty());
}

TEST_F(ScenarioTest, ReadsEveryFieldOfWhatTheSearchFinds) {
    const Core::SearchResult found = read("[search]\nupgrade_type=USB\nkind=1\nscope=3\nupgrade_id=00ff\n"
                                          "version=WOC_ONLY_VERSION\nupdate_info=<u/>\n")
                                         .found;
    EXPECT_EQ(found.upgradeType, DAXCommon::USB);
    EXPECT_EQ(found.kind, DAXCommon::UPGRADE_KIND_IMPORTANT);
    EXPECT_EQ(found.scope, 3);
    EXPECT_THAT(found.upgradeId, ElementsAre(0x00, 0xff));
    EXPECT_TRUE(found.version == std::string("WOC_ONLY_VERSION"));
    EXPECT_THAT(found.updateInfo, ElementsAre('<', 'u', '/', '>'));
}

TEST_F(ScenarioTest, ReadsAnUpgradeWithoutVersionOrIdentifier) {
    const Core::SearchResult found = read("[search]\nversion=\nupgrade_id=\n").found;
    EXPECT_TRUE(found.version == boost::none);
    EXPECT_THAT(found.upgradeId, IsEmpty());
}

TEST_F(ScenarioTest, ReadsAKindThatNoClientCanRead) {
    EXPECT_EQ(static_cast<int>(read("[search]\nkind=2\n").found.kind), 2);
}

TEST_F(ScenarioTest, ReadsWhetherASearchIsPossible) {
    EXPECT_TRUE(read("[search]\npossible=false\n").searchingPossible == boost::optional<bool>(false));
    EXPECT_TRUE(read("[search]\npossible=unknown\n").searchingPossible == boost::none);
}

TEST_F(ScenarioTest, ReadsHowLongTheStepsTakeAndHowTheyEnd) {
    const Scenario scenario = read("[search]\nseconds=0.25\nresult=failed\n[installation]\nseconds=0\n"
                                   "[finalization]\nseconds=3\nresult=failed\n");
    EXPECT_EQ(scenario.search.seconds, 0.25);
    EXPECT_FALSE(scenario.search.succeeds);
    EXPECT_EQ(scenario.installation.seconds, 0);
    EXPECT_TRUE(scenario.installation.succeeds);
    EXPECT_EQ(scenario.finalization.seconds, 3);
    EXPECT_FALSE(scenario.finalization.succeeds);
}

TEST_F(ScenarioTest, ReadsAFaultForEachMethod) {
    const auto faults = read("[fault helloMessage]\nempty_reply=true\n[fault getSearchResult]\ndie=after\n").faults;
    EXPECT_TRUE(faults.at("helloMessage").emptyReply);
    EXPECT_EQ(faults.at("getSearchResult").death, Fault::Death::AFTER_REPLY);
}

TEST(Fault, StrikesAtEveryCallOrAtTheNthAlone) {
    Fault fault;
    EXPECT_TRUE(fault.strikes(1) && fault.strikes(2));
    fault.call = 2;
    EXPECT_FALSE(fault.strikes(1));
    EXPECT_TRUE(fault.strikes(2));
    EXPECT_FALSE(fault.strikes(3));
}

TEST_F(ScenarioTest, TakesEveryNameThatCrossesTheBus) {
    for (const char* const name :
         {"TransactionInvalidatedException", "CUpdateFailed", "CUSBReadError", "CNetworkTransferError",
          "CUSBImageCorrupted", "CUSBDecryptionError", "CImageCorrupted", "CWrongKeys", "CImageLacksIntegrity",
          "ExternalLockDenied", "CWildcardImageNotAllowedException", "InsufficientRWStorageSpace",
          "DAXUnknownException"}) {
        EXPECT_EQ(name,
                  read(std::string("[fault helloMessage]\nexception=") + name).faults.at("helloMessage").exception);
    }
}

struct BrokenScenario {
    const char* text;
    const char* refusal;
};

class BrokenScenarioTest : public ScenarioTest, public testing::WithParamInterface<BrokenScenario> {};

const BrokenScenario BROKEN[] = {
    {"[core]\nsupported_types=OTN;DVD\n",
     "[core] supported_types: 'DVD' is none of OTA, OTN, POSTPONE, UNDEFINED, USB"},
    {"[search]\nupgrade_type=DVD\n", "[search] upgrade_type: 'DVD' is none of OTA, OTN, POSTPONE, UNDEFINED, USB"},
    {"[search]\npossible=perhaps\n", "[search] possible: 'perhaps' is none of false, true, unknown"},
    {"[search]\nresult=perhaps\n", "[search] result: 'perhaps' is none of failed, success"},
    {"[search]\nkind=256\n", "[search] kind: a number from 0 to 255 is expected; 0 and 1 are valid ones"},
    {"[search]\nupgrade_id=abc\n", "[search] upgrade_id: pairs of hexadecimal digits (0-9, a-f) are expected"},
    {"[search]\nupgrade_id=xy\n", "[search] upgrade_id: pairs of hexadecimal digits (0-9, a-f) are expected"},
    {"[search]\nseconds=-1\n", "[search] seconds: a number of seconds from 0 to 1000000000 is expected"},
    {"[installation]\nseconds=nan\n", "[installation] seconds: a number of seconds from 0 to 1000000000 is expected"},
    {"[fault helloMessage]\ncall=0\n", "[fault helloMessage] call: the first call is number 1"},
    {"[fault helloMessage]\ndie=later\n", "[fault helloMessage] die: 'later' is none of after, before"},
    {"[fault helloMessage]\nexception=UnknownException\n",
     "[fault helloMessage] exception: 'UnknownException' does not cross the bus"},
    {"[fault getService]\n", "[fault getService]: the core has no method 'getService'"},
    {"[installation]\nresult=perhaps\n", "[installation] result: 'perhaps' is none of failed, success"},
    {"[finalization]\nresult=\n", "[finalization] result: '' is none of failed, success"},
    {"[finalization]\nseconds=1000000001\n",
     "[finalization] seconds: a number of seconds from 0 to 1000000000 is expected"},
    {"[search]\nkind=-1\n", "[search] kind: a number from 0 to 255 is expected; 0 and 1 are valid ones"},
    {"[fault helloMessage]\nstall_seconds=-1\n",
     "[fault helloMessage] stall_seconds: a number of seconds from 0 to 1000000000 is expected"},
    {"[core]\nspeed=1\n", "[core] speed: there is no such key"},
    {"[search]\nspeed=1\n", "[search] speed: there is no such key"},
    {"[installation]\nversion=1\n", "[installation] version: there is no such key"},
    {"[finalization]\npossible=true\n", "[finalization] possible: there is no such key"},
    {"[fault helloMessage]\nspeed=1\n", "[fault helloMessage] speed: there is no such key"},
    {"[fault ]\n", "[fault ]: the core has no method ''"},
    {"[sound]\nvolume=1\n", "[sound]: there is no such group"},
};

INSTANTIATE_TEST_SUITE_P(All, BrokenScenarioTest, testing::ValuesIn(BROKEN));

TEST_P(BrokenScenarioTest, IsRefusedByFileGroupAndKey) {
    EXPECT_EQ(GetParam().refusal, refusalOf(GetParam().text));
}

// The reasons in these texts come from the key file library.
TEST_F(ScenarioTest, RefusesValuesOfAnotherTypeByFileGroupAndKey) {
    using testing::StartsWith;
    EXPECT_THAT(refusalOf("[search]\nscope=wide\n"), StartsWith("[search] scope: "));
    EXPECT_THAT(refusalOf("[search]\nseconds=soon\n"), StartsWith("[search] seconds: "));
    EXPECT_THAT(refusalOf("[core]\nrefuse_transactions=perhaps\n"), StartsWith("[core] refuse_transactions: "));
    EXPECT_THAT(refusalOf("[search]\nkind=new\n"), StartsWith("[search] kind: "));
    EXPECT_THAT(refusalOf("[fault helloMessage]\ncall=first\n"), StartsWith("[fault helloMessage] call: "));
    EXPECT_THAT(refusalOf("[fault helloMessage]\nstall_seconds=long\n"),
                StartsWith("[fault helloMessage] stall_seconds: "));
    EXPECT_THAT(refusalOf("[fault helloMessage]\nempty_reply=perhaps\n"),
                StartsWith("[fault helloMessage] empty_reply: "));
    EXPECT_THAT(refusalOf("[core]\nversion=\xFF\n"), StartsWith("[core] version: "));
    EXPECT_THAT(refusalOf("[search]\nmodels=\xFF;\n"), StartsWith("[search] models: "));
}

TEST_F(ScenarioTest, RefusesAMissingFileAndAFileThatIsNoKeyFile) {
    EXPECT_NE(refusalOf("version=1000\n"), "it was read");
    const std::string nowhere = (m_root / "nowhere.ini").string();
    try {
        readScenario(nowhere);
        ADD_FAILURE() << "it was read";
    } catch (const ScenarioError& error) {
        EXPECT_EQ(std::string(error.what()), nowhere + ": No such file or directory");
    }
}

} // namespace
