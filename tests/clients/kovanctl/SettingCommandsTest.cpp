#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>
#include <vconf.h>

#include "clients/kovanctl/KovanctlTest.h"

using namespace DAX::Tests;
using testing::HasSubstr;
using Json = nlohmann::json;

namespace {

class SettingCommandsTest : public KovanctlTest {
protected:
    static FinishedRun setting(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "setting");
        return kovanctl(arguments);
    }
};

const std::string KEY_RULE = "a key begins with \"db/\", \"rtc/\" or \"memory/\" and has at most 511 bytes\n";

struct Written {
    const char* type;
    const char* text;
    const char* shown;
    Json json;
};

class KovanctlValueTest : public SettingCommandsTest, public testing::WithParamInterface<Written> {};

struct MistakenSetting {
    const char* type;
    const char* text;
};

// Names the tests "int4" and so on.
template <class Value>
std::string nameByType(const testing::TestParamInfo<Value>& info) {
    return info.param.type + std::to_string(info.index);
}

class KovanctlWrongValueTest : public SettingCommandsTest, public testing::WithParamInterface<MistakenSetting> {};

} // namespace

TEST_P(KovanctlValueTest, GetPrintsWhatSetWrote) {
    const Written& value = GetParam();

    EXPECT_EQ(setting({"set", "db/key", value.type, "--", value.text}).end, DONE);

    const FinishedRun run = setting({"get", "db/key"});
    EXPECT_EQ(run.end, DONE);
    EXPECT_EQ(run.output, std::string(value.shown) + "\n");
    EXPECT_EQ(run.errors, "");
}

TEST_P(KovanctlValueTest, JsonOfSetAndGetIsTheSameRecord) {
    const Written& value = GetParam();
    const Json expected = {{"key", "db/key"}, {"type", value.type}, {"value", value.json}};

    EXPECT_EQ(Json::parse(setting({"set", "--json", "db/key", value.type, "--", value.text}).output), expected);
    EXPECT_EQ(Json::parse(setting({"get", "--json", "db/key"}).output), expected);
}

INSTANTIATE_TEST_SUITE_P(Values, KovanctlValueTest,
                         testing::Values(Written{"bool", "true", "true", true}, Written{"bool", "1", "true", true},
                                         Written{"bool", "false", "false", false}, Written{"bool", "0", "false", false},
                                         Written{"int", "42", "42", 42},
                                         Written{"int", "-2147483648", "-2147483648", -2147483647 - 1},
                                         Written{"double", "0.1", "0.1", 0.1}, Written{"double", "2", "2.0", 2.0},
                                         Written{"double", "-1e300", "-1e+300", -1e300},
                                         Written{"string", "two words", "two words", "two words"},
                                         Written{"string", "-dash", "-dash", "-dash"}, Written{"string", "", "", ""}),
                         nameByType<Written>);

TEST_P(KovanctlWrongValueTest, IsWrongUsageAndWritesNothing) {
    const MistakenSetting& value = GetParam();

    expectFailure(setting({"set", "db/key", value.type, value.text}), WRONG_USAGE,
                  std::string("kovanctl: '") + value.text + "' is not of type " + value.type + "\n");
    EXPECT_TRUE(std::filesystem::is_empty(m_root.path()));
}

INSTANTIATE_TEST_SUITE_P(WrongValues, KovanctlWrongValueTest,
                         testing::Values(MistakenSetting{"bool", "yes"}, MistakenSetting{"bool", "2"},
                                         MistakenSetting{"bool", ""}, MistakenSetting{"int", "1.5"},
                                         MistakenSetting{"int", "2147483648"}, MistakenSetting{"int", "x"},
                                         MistakenSetting{"int", "1x"}, MistakenSetting{"int", " 1"},
                                         MistakenSetting{"int", ""}, MistakenSetting{"double", "1e999"},
                                         MistakenSetting{"double", "nan"}, MistakenSetting{"double", "inf"},
                                         MistakenSetting{"double", "1,5"}),
                         nameByType<MistakenSetting>);

TEST_F(SettingCommandsTest, NegativeNumberNeedsNoDashes) {
    EXPECT_EQ(setting({"set", "db/key", "int", "-1"}).end, DONE);

    EXPECT_EQ(setting({"get", "db/key"}).output, "-1\n");
}

TEST_F(SettingCommandsTest, UnknownTypeIsWrongUsage) {
    const FinishedRun run = setting({"set", "db/key", "float", "1"});

    EXPECT_EQ(run.end, WRONG_USAGE);
    EXPECT_EQ(run.output, "");
    EXPECT_THAT(run.errors, HasSubstr("float not in {bool,int,double,string}"));
}

TEST_F(SettingCommandsTest, GetOfAnAbsentKeyIsRefused) {
    expectFailure(setting({"get", "db/key"}), REFUSED, "kovanctl: 'db/key': there is no such setting\n");
}

TEST_F(SettingCommandsTest, FailureWithJsonIsADocumentToo) {
    const FinishedRun run = setting({"get", "db/key", "--json"});

    EXPECT_EQ(run.end, REFUSED);
    EXPECT_EQ(Json::parse(run.output), Json({{"error", "'db/key': there is no such setting"}, {"kind", "refused"}}));
    EXPECT_EQ(run.errors, "kovanctl: 'db/key': there is no such setting\n");
}

TEST_F(SettingCommandsTest, JsonIsTakenAtEveryPlace) {
    EXPECT_EQ(kovanctl({"--json", "setting", "list"}).output, "[]\n");
    EXPECT_EQ(kovanctl({"setting", "--json", "list"}).output, "[]\n");
    EXPECT_EQ(kovanctl({"setting", "list", "--json"}).output, "[]\n");
}

TEST_F(SettingCommandsTest, KeyThatNoStoreTakesIsRefused) {
    expectFailure(setting({"set", "key", "int", "1"}), REFUSED, "kovanctl: 'key': " + KEY_RULE);
    expectFailure(setting({"get", "key"}), REFUSED, "kovanctl: 'key': " + KEY_RULE);
    expectFailure(setting({"unset", "key"}), REFUSED, "kovanctl: 'key': " + KEY_RULE);
    expectFailure(setting({"get", ""}), REFUSED, "kovanctl: '': " + KEY_RULE);
}

TEST_F(SettingCommandsTest, StoreThatCannotBeReachedIsRefused) {
    m_root.write("var", "a file where a folder has to be");

    expectFailure(setting({"set", "db/key", "int", "1"}), REFUSED, "kovanctl: 'db/key': Not a directory\n");
}

TEST_F(SettingCommandsTest, UnsetRemovesASettingOnce) {
    setting({"set", "db/key", "int", "1"});

    EXPECT_EQ(setting({"unset", "db/key"}).end, DONE);
    expectFailure(setting({"get", "db/key"}), REFUSED, "kovanctl: 'db/key': there is no such setting\n");
    expectFailure(setting({"unset", "db/key"}), REFUSED, "kovanctl: 'db/key': there is no such setting\n");
}

TEST_F(SettingCommandsTest, UnsetWithJsonNamesTheKey) {
    setting({"set", "memory/key", "int", "1"});

    EXPECT_EQ(Json::parse(setting({"unset", "--json", "memory/key"}).output), Json({{"key", "memory/key"}}));
}

TEST_F(SettingCommandsTest, ListPrintsBothStoresInTheOrderOfTheirKeys) {
    setting({"set", "memory/a", "string", "two\nlines"});
    setting({"set", "rtc/b", "double", "0.5"});
    setting({"set", "db/c", "bool", "true"});

    const FinishedRun run = setting({"list"});

    EXPECT_EQ(run.end, DONE);
    EXPECT_EQ(run.output, "db/c bool true\nmemory/a string \"two\\nlines\"\nrtc/b double 0.5\n");
}

TEST_F(SettingCommandsTest, ListTakesAPrefix) {
    for (const char* key : {"db/a/x", "db/ab", "db/a", "db/b", "memory/a"}) {
        setting({"set", key, "int", "1"});
    }

    EXPECT_EQ(setting({"list", "db/a"}).output, "db/a int 1\ndb/a/x int 1\ndb/ab int 1\n");
    EXPECT_EQ(setting({"list", "m"}).output, "memory/a int 1\n");
}

TEST_F(SettingCommandsTest, ListOfNothingIsEmptyAndMakesNothing) {
    const FinishedRun run = setting({"list"});

    EXPECT_EQ(run.end, DONE);
    EXPECT_EQ(run.output, "");
    EXPECT_TRUE(std::filesystem::is_empty(m_root.path()));
}

TEST_F(SettingCommandsTest, ListWithJsonIsAnArrayOfRecords) {
    setting({"set", "db/key", "int", "1"});

    EXPECT_EQ(Json::parse(setting({"list", "--json"}).output),
              Json::array({{{"key", "db/key"}, {"type", "int"}, {"value", 1}}}));
}

TEST_F(SettingCommandsTest, WritesWhatThePlatformReads) {
    int value = 0;
    setting({"set", "db/key", "int", "7"});

    EXPECT_EQ(vconf_get_int("db/key", &value), 0);
    EXPECT_EQ(value, 7);
}

TEST_F(SettingCommandsTest, ReadsWhatThePlatformWrote) {
    ASSERT_EQ(vconf_set_str("memory/key", "text"), 0);

    EXPECT_EQ(setting({"get", "memory/key"}).output, "text\n");
}

TEST_F(SettingCommandsTest, IncompleteOrUnknownCommandIsWrongUsage) {
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{},
                                                      {"setting"},
                                                      {"setting", "get"},
                                                      {"setting", "set", "db/key", "int"},
                                                      {"nothing"},
                                                      {"setting", "get", "db/key", "more"},
                                                      {"setting", "get", "--nothing", "db/key"}}) {
        const FinishedRun run = kovanctl(arguments);
        EXPECT_EQ(run.end, WRONG_USAGE) << testing::PrintToString(arguments);
        EXPECT_EQ(run.output, "");
        EXPECT_NE(run.errors, "");
    }
}

TEST_F(SettingCommandsTest, HelpIsThereAtEveryPlace) {
    for (const std::vector<std::string>& place : {std::vector<std::string>{},
                                                  {"setting"},
                                                  {"setting", "get"},
                                                  {"setting", "set"},
                                                  {"setting", "list"},
                                                  {"setting", "unset"}}) {
        std::vector<std::string> arguments = place;
        arguments.push_back("--help");
        const FinishedRun run = kovanctl(arguments);
        EXPECT_EQ(run.end, DONE);
        EXPECT_THAT(run.output, HasSubstr("Usage: kovanctl"));
        EXPECT_THAT(run.output, HasSubstr("--json"));
        EXPECT_EQ(run.errors, "");
    }
}
