#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>
#include <system_info.h>

#include "clients/kovanctl/KovanctlTest.h"

using namespace DAX::Tests;
using testing::HasSubstr;
using testing::StartsWith;
using Json = nlohmann::json;

namespace {

const char* const FILE_NAME = "etc/kovan/device.ini";

class InfoCommandsTest : public KovanctlTest {
protected:
    static FinishedRun info(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "info");
        return kovanctl(arguments);
    }

    static std::string get(const std::string& key) { return info({"get", key}).output; }

    void device(const std::string& text) const { m_root.write(FILE_NAME, text); }
    std::string device() const { return m_root.read(FILE_NAME); }
    std::string path() const { return (m_root / FILE_NAME).string(); }
};

struct Known {
    const char* key;
    const char* type;
    const char* shown;
    Json value;
    const char* other;
};

class KnownFactTest : public InfoCommandsTest, public testing::WithParamInterface<Known> {};

struct Mistaken {
    const char* key;
    const char* type;
    const char* text;
};

class WrongFactTest : public InfoCommandsTest, public testing::WithParamInterface<Mistaken> {};
class UnknownFactTest : public InfoCommandsTest, public testing::WithParamInterface<const char*> {};

const std::string HEIGHT = "features/com.velmora/featureconf/panel_resolution_height";

} // namespace

TEST_P(KnownFactTest, HasItsDefaultUntilItIsGiven) {
    const Known& fact = GetParam();
    const FinishedRun run = info({"get", fact.key});

    EXPECT_EQ(run.end, DONE);
    EXPECT_EQ(run.output, std::string(fact.shown) + "\n");
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(Json::parse(info({"get", "--json", fact.key}).output),
              Json({{"key", fact.key}, {"type", fact.type}, {"value", fact.value}, {"given", false}}));
}

TEST_P(KnownFactTest, IsWhatWasSet) {
    const Known& fact = GetParam();
    const FinishedRun run = info({"set", fact.key, "--", fact.other});

    EXPECT_EQ(run.end, DONE);
    EXPECT_EQ(run.output + run.errors, "");
    EXPECT_EQ(get(fact.key), std::string(fact.other) + "\n");
    EXPECT_TRUE(Json::parse(info({"get", "--json", fact.key}).output).at("given").get<bool>());
}

INSTANTIATE_TEST_SUITE_P(
    Facts, KnownFactTest,
    testing::Values(Known{"software/production", "bool", "false", false, "true"},
                    Known{"directories/apps", "string", "/usr/apps", "/usr/apps", "/a b"},
                    Known{"system_info/software_version", "string", "T-MARLOW-1666.1", "T-MARLOW-1666.1", ""},
                    Known{"system_info/localset", "string", "EU", "EU", " two\nlines\\"},
                    Known{"system_info/otn_onoff", "int", "1", 1, "0"},
                    Known{"features/com.velmora/featureconf/iwb_support", "bool", "false", false, "true"},
                    Known{"plantcfg/localset", "int", "1", 1, "-7"},
                    Known{"results/system_info/otn_onoff", "int", "0", 0, "-5"},
                    Known{"results/features/any/key", "int", "0", 0, "-22"},
                    Known{"results/system_info/12345", "int", "0", 0, "7"},
                    Known{"results/plantcfg/model", "int", "1", 1, "-1"}));

TEST_P(WrongFactTest, IsWrongUsageAndWritesNothing) {
    const Mistaken& value = GetParam();

    expectFailure(info({"set", value.key, "--", value.text}), WRONG_USAGE,
                  std::string("kovanctl: '") + value.text + "' is not of type " + value.type + "\n");
    EXPECT_TRUE(std::filesystem::is_empty(m_root.path()));
}

INSTANTIATE_TEST_SUITE_P(Facts, WrongFactTest,
                         testing::Values(Mistaken{"software/production", "bool", "perhaps"},
                                         Mistaken{"system_info/otn_onoff", "int", "on"},
                                         Mistaken{"system_info/otn_onoff", "int", "2147483648"},
                                         Mistaken{"plantcfg/model", "int", ""},
                                         Mistaken{"results/plantcfg/model", "int", "fail"}));

TEST_P(UnknownFactTest, IsRefused) {
    const std::string message = std::string("kovanctl: '") + GetParam() + "': there is no such fact\n";

    expectFailure(info({"get", GetParam()}), REFUSED, message);
    expectFailure(info({"set", GetParam(), "1"}), REFUSED, message);
    EXPECT_TRUE(std::filesystem::is_empty(m_root.path()));
}

INSTANTIATE_TEST_SUITE_P(Facts, UnknownFactTest,
                         testing::Values("localset", "system_info", "system_info/nothing", "system_info/128",
                                         "system_info/007", "plantcfg/12345", "other/localset", "features/", "/", "",
                                         "com.velmora/featureconf/iwb_support", "results/", "results/otn_onoff",
                                         "results/system_info/902", "results/system_info/nothing",
                                         "results/plantcfg/12345", "results/software/production",
                                         "results/directories/apps", "results/results/plantcfg/model"));

TEST_F(InfoCommandsTest, OtherNumbersAndFeaturesAreTextsThatMayBeGiven) {
    expectFailure(info({"get", "system_info/12345"}), REFUSED,
                  "kovanctl: 'system_info/12345': there is no such fact\n");
    EXPECT_EQ(info({"set", "system_info/12345", "7"}).end, DONE);
    EXPECT_EQ(info({"set", "features/com.velmora/other", "a b"}).end, DONE);

    EXPECT_EQ(get("system_info/12345"), "7\n");
    EXPECT_EQ(Json::parse(info({"get", "features/com.velmora/other", "--json"}).output),
              Json({{"key", "features/com.velmora/other"}, {"type", "string"}, {"value", "a b"}, {"given", true}}));
}

TEST_F(InfoCommandsTest, WritesWhatThePlatformReads) {
    int number = 0;
    info({"set", HEIGHT, "540"});
    EXPECT_EQ(system_info_get_custom_int("com.velmora/featureconf/panel_resolution_height", &number), 0);
    EXPECT_EQ(number, 540);
    info({"set", "system_info/12345", "7"});
    EXPECT_EQ(system_info_get_value_int(static_cast<system_info_key_e>(12345), &number), 0);
    EXPECT_EQ(number, 7);
}

TEST_F(InfoCommandsTest, ResultThatIsSetFailsTheReadUntilItIsSuccessAgain) {
    int number = 0;
    info({"set", "results/system_info/otn_onoff", "--", "-5"});
    EXPECT_EQ(system_info_get_value_int(SYSTEM_INFO_KEY_OTN_ONOFF, &number), -5);
    EXPECT_EQ(info({"list", "results"}).output, "results/system_info/otn_onoff int -5\n");
    info({"set", "results/system_info/otn_onoff", "0"});
    EXPECT_EQ(system_info_get_value_int(SYSTEM_INFO_KEY_OTN_ONOFF, &number), 0);
}

TEST_F(InfoCommandsTest, SetKeepsCommentsAndOtherLines) {
    device("# mine\n[system_info]\n# where\nlocalset=EU\nodd = 1\n\n# more\n[plantcfg]\nmodel=2\n");
    info({"set", "system_info/localset", "US"});
    info({"set", "system_info/otn_onoff", "0"});

    EXPECT_EQ(device(),
              "# mine\n[system_info]\n# where\nlocalset=US\nodd = 1\notn_onoff=0\n\n# more\n[plantcfg]\nmodel=2\n");
}

TEST_F(InfoCommandsTest, SetWithJsonPrintsTheNewValue) {
    EXPECT_EQ(Json::parse(info({"set", HEIGHT, "540", "--json"}).output),
              Json({{"key", HEIGHT}, {"type", "int"}, {"value", 540}, {"given", true}}));
}

TEST_F(InfoCommandsTest, BoolIsWrittenAsAWord) {
    info({"set", "software/production", "1"});
    EXPECT_EQ(device(), "[software]\nproduction=true\n");
}

TEST_F(InfoCommandsTest, SetRefusesWhatTheFileCannotHold) {
    expectFailure(info({"set", "features/a=b", "1"}), REFUSED, "kovanctl: 'a=b' cannot be a name in a key file\n");
    expectFailure(info({"set", "features/a", "\xff"}), REFUSED, "kovanctl: '\xef\xbf\xbd' is no UTF-8 text\n");
    expectFailure(info({"set", "features/a", "\fx"}), REFUSED, "kovanctl: '?x' begins with a form feed\n");
    expectFailure(info({"set", "features/a", std::string(70000, 'x')}), REFUSED,
                  "kovanctl: " + path() + ": larger than 65536 bytes\n");
    EXPECT_EQ(device(), "");
}

TEST_F(InfoCommandsTest, FileThatCannotBeWrittenIsRefused) {
    m_root.write("etc", "a file where a folder has to be");

    expectFailure(info({"set", "plantcfg/model", "2"}), REFUSED,
                  "kovanctl: " + (m_root / "etc/kovan").string() + ": Not a directory\n");
}

TEST_F(InfoCommandsTest, BadFileIsRefusedByAllAndStays) {
    device("[plantcfg]\nmodel\n");
    const std::string reason =
        path() + ": line 2: Key file contains line “model” which is not a key-value pair, group, or comment";

    expectFailure(info({"get", "plantcfg/model"}), REFUSED, "kovanctl: " + reason + "\n");
    expectFailure(info({"list"}), REFUSED, "kovanctl: " + reason + "\n");
    expectFailure(info({"set", "plantcfg/model", "2"}), REFUSED, "kovanctl: " + reason + "\n");
    EXPECT_EQ(Json::parse(info({"get", "plantcfg/model", "--json"}).output),
              Json({{"error", reason}, {"kind", "failed"}}));
    EXPECT_EQ(device(), "[plantcfg]\nmodel\n");
}

TEST_F(InfoCommandsTest, ValueOfTheWrongTypeIsReportedAndTheDefaultIsUsed) {
    device("[plantcfg]\nmodel=M\n");
    const FinishedRun run = info({"get", "plantcfg/model"});

    EXPECT_EQ(run.end, DONE);
    EXPECT_EQ(run.output, "1\n");
    EXPECT_EQ(run.errors, path() + ": line 2: 'model' in [plantcfg] is no number of 32 bits: 'M'; using the default\n");
    EXPECT_EQ(info({"set", "plantcfg/model", "2"}).end, DONE);
    EXPECT_EQ(get("plantcfg/model"), "2\n");
}

TEST_F(InfoCommandsTest, ListShowsAllFactsAndWhatElseTheFileHas) {
    device(
        "[system_info]\nlocalset=US\n12345=7\nnothing=1\n[features]\ncom.velmora/a=two\\nlines\nb=\\q\n[other]\nc=1\n");
    const FinishedRun run = info({"list"});

    EXPECT_EQ(run.end, DONE);
    EXPECT_THAT(run.output, StartsWith("software/production bool false\ndirectories/apps string \"/usr/apps\"\n"));
    EXPECT_THAT(run.output, HasSubstr("\nsystem_info/localset string \"US\"\n"));
    EXPECT_THAT(run.output, testing::EndsWith("\nplantcfg/localset int 1\n"
                                              "system_info/12345 string \"7\"\n"
                                              "features/com.velmora/a string \"two\\nlines\"\n"
                                              "features/b string \"\\\\q\"\n"));
    EXPECT_EQ(run.errors, "");
}

TEST_F(InfoCommandsTest, ListTakesAPrefix) {
    EXPECT_EQ(info({"list", "plantcfg"}).output, "plantcfg/model int 1\nplantcfg/localset int 1\n");
    EXPECT_EQ(info({"list", HEIGHT}).output, HEIGHT + " int 2160\n");
    EXPECT_EQ(info({"list", "nothing"}).output, "");
    EXPECT_TRUE(std::filesystem::is_empty(m_root.path()));
}

TEST_F(InfoCommandsTest, ListWithJsonIsAnArrayOfRecords) {
    device("[plantcfg]\nmodel=2\n");

    EXPECT_EQ(Json::parse(info({"list", "plantcfg/", "--json"}).output),
              Json::array({{{"key", "plantcfg/model"}, {"type", "int"}, {"value", 2}, {"given", true}},
                           {{"key", "plantcfg/localset"}, {"type", "int"}, {"value", 1}, {"given", false}}}));
    EXPECT_EQ(Json::parse(info({"list", "nothing", "--json"}).output), Json::array());
}

TEST_F(InfoCommandsTest, InitWritesAFileThatSaysTheDefaults) {
    const std::string before = info({"list"}).output;
    const FinishedRun run = kovanctl({"device", "init"});

    EXPECT_EQ(run.end, DONE);
    EXPECT_EQ(run.output, path() + "\n");
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(before, info({"list"}).output);
    for (const Json& fact : Json::parse(info({"list", "--json"}).output)) {
        EXPECT_TRUE(fact.at("given").get<bool>()) << fact;
    }
    EXPECT_THAT(device(), HasSubstr("\n[plantcfg]\n# The number of the model\nmodel=1\n"));
    EXPECT_THAT(device(), testing::EndsWith("\n[results]\n"
                                            "# What the question for a fact results in, instead of success: makes it "
                                            "fail. For instance:\n"
                                            "# system_info/otn_onoff=-5\n"
                                            "# plantcfg/model=-1\n"));
}

TEST_F(InfoCommandsTest, InitLeavesAFileThatExists) {
    device("[plantcfg]\nmodel=2\n");

    expectFailure(kovanctl({"device", "init"}), REFUSED, "kovanctl: " + path() + ": there is one already\n");
    EXPECT_EQ(device(), "[plantcfg]\nmodel=2\n");
    device("bad");
    expectFailure(kovanctl({"device", "init"}), REFUSED, "kovanctl: " + path() + ": there is one already\n");
    EXPECT_EQ(device(), "bad");
}

TEST_F(InfoCommandsTest, InitByForceReplacesAnyFile) {
    kovanctl({"device", "init"});
    const std::string defaults = device();
    device("[plantcfg]\nmodel=2\n");
    EXPECT_EQ(kovanctl({"device", "init", "--force"}).end, DONE);
    EXPECT_EQ(defaults, device());
    EXPECT_EQ(Json::parse(kovanctl({"device", "init", "--force", "--json"}).output), Json({{"path", path()}}));
    device("bad");
    const FinishedRun run = kovanctl({"device", "init", "--force"});
    EXPECT_EQ(run.end, DONE);
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(defaults, device());
}

TEST_F(InfoCommandsTest, IncompleteOrUnknownCommandIsWrongUsage) {
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{"info"},
                                                      {"info", "get"},
                                                      {"info", "set", "plantcfg/model"},
                                                      {"info", "get", "plantcfg/model", "more"},
                                                      {"info", "nothing"},
                                                      {"device"},
                                                      {"device", "init", "more"}}) {
        const FinishedRun run = kovanctl(arguments);
        EXPECT_EQ(run.end, WRONG_USAGE) << testing::PrintToString(arguments);
        EXPECT_EQ(run.output, "");
        EXPECT_NE(run.errors, "");
    }
}

TEST_F(InfoCommandsTest, HelpIsThereAtEveryPlace) {
    for (const std::vector<std::string>& place : {std::vector<std::string>{"info"},
                                                  {"info", "get"},
                                                  {"info", "set"},
                                                  {"info", "list"},
                                                  {"device"},
                                                  {"device", "init"}}) {
        std::vector<std::string> arguments = place;
        arguments.push_back("--help");
        const FinishedRun run = kovanctl(arguments);
        EXPECT_EQ(run.end, DONE);
        EXPECT_THAT(run.output, HasSubstr("Usage: kovanctl"));
        EXPECT_THAT(run.output, HasSubstr("--json"));
    }
}
