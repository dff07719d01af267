#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <variant>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <system_info.h>

#include "host/DeviceFile.h"
#include "platform/host/DeviceTest.h"

using DAX::Tests::errorsOf;
using KovanHost::DeviceFact;
using testing::HasSubstr;

namespace {

const std::string HEIGHT = "com.velmora/featureconf/panel_resolution_height";

// The answer to a question: the result, and the value afterwards.
using Text = std::pair<int, std::string>;
using Number = std::pair<int, int>;
using Flag = std::pair<int, bool>;

constexpr int UNTOUCHED = -12345;

template <class Question>
Text askText(Question ask) {
    char* text = nullptr;
    const int result = ask(&text);
    const std::string value = text != nullptr ? text : "<untouched>";
    std::free(text);
    return {result, value};
}

template <class Value, class Question>
std::pair<int, Value> askValue(Value before, Question ask) {
    const int result = ask(&before);
    return {result, before};
}

system_info_key_e keyOf(int number) {
    return static_cast<system_info_key_e>(number);
}

Text valueText(int key) {
    return askText([=](char** text) { return system_info_get_value_string(keyOf(key), text); });
}

Text customText(const std::string& key) {
    return askText([&](char** text) { return system_info_get_custom_string(key.c_str(), text); });
}

Number valueNumber(int key) {
    return askValue(UNTOUCHED, [=](int* number) { return system_info_get_value_int(keyOf(key), number); });
}

Number customNumber(const std::string& key) {
    return askValue(UNTOUCHED, [&](int* number) { return system_info_get_custom_int(key.c_str(), number); });
}

// A flag keeps the value `before` unless it is read.
Flag valueFlag(int key, bool before) {
    return askValue(before, [=](bool* flag) { return system_info_get_value_bool(keyOf(key), flag); });
}

Flag customFlag(const std::string& key, bool before) {
    return askValue(before, [&](bool* flag) { return system_info_get_custom_bool(key.c_str(), flag); });
}

const Text NO_TEXT{-22, "<untouched>"};
const Number NO_NUMBER{-22, UNTOUCHED};

struct Expected {
    int key;
    const char* name;
    std::variant<int, const char*> value;
};

class SystemInfoTest : public DAX::Tests::DeviceTest {};
class SystemInfoValueTest : public SystemInfoTest, public testing::WithParamInterface<Expected> {};

struct ExpectedFeature {
    const char* name;
    std::variant<bool, int, const char*> value;
};

class SystemInfoFeatureTest : public SystemInfoTest, public testing::WithParamInterface<ExpectedFeature> {
protected:
    std::string key() const { return std::string("com.velmora/featureconf/") + GetParam().name; }
    void give(const std::string& value) const { device("[features]\n" + key() + "=" + value + "\n"); }
};

} // namespace

TEST_P(SystemInfoValueTest, HasADefaultOfOneType) {
    const auto& [key, name, value] = GetParam();
    if (const int* const number = std::get_if<int>(&value)) {
        EXPECT_EQ(valueNumber(key), (Number{0, *number}));
        EXPECT_EQ(valueText(key), NO_TEXT);
    } else {
        EXPECT_EQ(valueText(key), (Text{0, std::get<const char*>(value)}));
        EXPECT_EQ(valueNumber(key), NO_NUMBER);
    }
    EXPECT_EQ(valueFlag(key, true), (Flag{-22, true}));
}

TEST_P(SystemInfoValueTest, IsTakenFromTheFileByItsName) {
    const auto& [key, name, value] = GetParam();
    device(std::string("[system_info]\n") + name + "=77\n");
    if (std::holds_alternative<int>(value)) {
        EXPECT_EQ(valueNumber(key), (Number{0, 77}));
    } else {
        EXPECT_EQ(valueText(key), (Text{0, "77"}));
    }
}

TEST_P(SystemInfoValueTest, IsNotTakenFromTheFileByItsNumber) {
    const auto& [key, name, value] = GetParam();
    device("[system_info]\n" + std::to_string(key) + "=77\n");

    EXPECT_NE(valueNumber(key), (Number{0, 77}));
    EXPECT_NE(valueText(key), (Text{0, "77"}));
}

INSTANTIATE_TEST_SUITE_P(
    Values, SystemInfoValueTest,
    testing::Values(Expected{0, "model_line", "EUR_DTV"}, Expected{8, "software_date", "2026-03-02"},
                    Expected{90, "localset", "EU"}, Expected{126, "otn_server_type", 1},
                    Expected{128, "software_version", "T-MARLOW-1666.1"}, Expected{133, "submicom_version", "SUB-1004"},
                    Expected{284, "sales_region", 1}, Expected{564, "platform_type", "MARLOW"},
                    Expected{620, "china_model_line", "CHI_MARLOW"}, Expected{869, "fast_usb_booting", 0},
                    Expected{890, "ota_support", 1}, Expected{902, "otn_onoff", 1}, Expected{904, "otn_testserver", 0},
                    Expected{922, "dax_duration", 0}, Expected{923, "dax_fail_test", 0},
                    Expected{10130, "hotel_otn_update", 1}),
    [](const auto& instance) { return instance.param.name; });

TEST_P(SystemInfoFeatureTest, HasADefaultOfOneType) {
    const auto& value = GetParam().value;
    const bool* const flag = std::get_if<bool>(&value);
    const int* const number = std::get_if<int>(&value);
    const char* const* const text = std::get_if<const char*>(&value);

    EXPECT_EQ((flag != nullptr ? Flag{0, *flag} : Flag{-22, true}), customFlag(key(), flag == nullptr || !*flag));
    EXPECT_EQ((number != nullptr ? Number{0, *number} : NO_NUMBER), customNumber(key()));
    EXPECT_EQ(customText(key()), (text != nullptr ? Text{0, *text} : NO_TEXT));
}

TEST_P(SystemInfoFeatureTest, IsTakenFromTheFile) {
    const auto& value = GetParam().value;
    if (const bool* const flag = std::get_if<bool>(&value)) {
        give(*flag ? "false" : "true");
        EXPECT_EQ(customFlag(key(), *flag), (Flag{0, !*flag}));
    } else {
        give("77");
        EXPECT_TRUE((Number{0, 77}) == customNumber(key()) || (Text{0, "77"}) == customText(key()));
    }
}

INSTANTIATE_TEST_SUITE_P(
    Features, SystemInfoFeatureTest,
    testing::Values(ExpectedFeature{"panel_resolution_height", 2160},
                    ExpectedFeature{"pictor_portrait_mode_support", false},
                    ExpectedFeature{"display_rotator_supported", false}, ExpectedFeature{"lfd_sbb_type", "NONE"},
                    ExpectedFeature{"power.battery_framework_support", false},
                    ExpectedFeature{"product.partition_file", "/etc/partition.txt"},
                    ExpectedFeature{"product.chipset", "MARLOW1"},
                    ExpectedFeature{"kovan_enterprise_platform.support", false}, ExpectedFeature{"iwb_support", false},
                    ExpectedFeature{"product.product_type", 0}, ExpectedFeature{"product.b2b_option_support", false}),
    [](const auto& instance) {
        std::string name = instance.param.name;
        std::replace(name.begin(), name.end(), '.', '_');
        return name;
    });

TEST_F(SystemInfoTest, OtherValuesAndKeysAreUnknownWithoutTheFile) {
    for (const int key : {-1, 1, 12345}) {
        EXPECT_EQ(valueNumber(key), NO_NUMBER);
        EXPECT_EQ(valueText(key), NO_TEXT);
        EXPECT_EQ(valueFlag(key, true), (Flag{-22, true}));
    }
    for (const char* key : {"", "another/key", "a=b", "[x]", "\xff", "a\nb"}) {
        EXPECT_EQ(customNumber(key), NO_NUMBER);
        EXPECT_EQ(customText(key), NO_TEXT);
        EXPECT_EQ(customFlag(key, true), (Flag{-22, true}));
    }
}

TEST_F(SystemInfoTest, OtherValuesAndKeysCanBeGiven) {
    device("[system_info]\n12345=1\n-1=x\n[features]\nanother/key=0\n");

    EXPECT_EQ(valueNumber(12345), (Number{0, 1}));
    EXPECT_EQ(valueText(12345), (Text{0, "1"}));
    EXPECT_EQ(valueFlag(12345, false), (Flag{0, true}));
    EXPECT_EQ(valueText(-1), (Text{0, "x"}));
    EXPECT_EQ(customNumber("another/key"), (Number{0, 0}));
    EXPECT_EQ(customText("another/key"), (Text{0, "0"}));
    EXPECT_EQ(customFlag("another/key", true), (Flag{0, false}));
}

TEST_F(SystemInfoTest, OtherValueOfTheWrongTypeIsAnErrorAndIsReportedOnce) {
    device("[system_info]\n12345=x\n[features]\nanother/key=a\\q\n");

    EXPECT_EQ(errorsOf([] {
                  EXPECT_EQ(valueNumber(12345), (Number{-5, UNTOUCHED}));
                  EXPECT_EQ(valueNumber(12345), (Number{-5, UNTOUCHED}));
              }),
              path() + ": line 2: '12345' in [system_info] is no number of 32 bits: 'x'; it cannot be read\n");
    EXPECT_THAT(errorsOf([] {
                    EXPECT_EQ(customText("another/key"), (Text{-5, "<untouched>"}));
                    EXPECT_EQ(customText("another/key"), (Text{-5, "<untouched>"}));
                }),
                testing::MatchesRegex(path() + ": line 4: 'another/key' in .features. is no UTF-8 text .*\n"));
    EXPECT_EQ(customFlag("another/key", true), (Flag{-5, true}));
}

TEST_P(SystemInfoValueTest, FailsWithTheResultThatTheFileGives) {
    for (const int result : {-5, -22, 7}) {
        device(std::string("[results]\nsystem_info/") + GetParam().name + "=" + std::to_string(result) + "\n");
        EXPECT_EQ(valueNumber(GetParam().key), (Number{result, UNTOUCHED}));
        EXPECT_EQ(valueText(GetParam().key), (Text{result, "<untouched>"}));
        EXPECT_EQ(valueFlag(GetParam().key, true), (Flag{result, true}));
    }
}

TEST_P(SystemInfoFeatureTest, FailsWithTheResultThatTheFileGives) {
    device("[results]\nfeatures/" + key() + "=-5\n");

    EXPECT_EQ(customNumber(key()), (Number{-5, UNTOUCHED}));
    EXPECT_EQ(customText(key()), (Text{-5, "<untouched>"}));
    EXPECT_EQ(customFlag(key(), true), (Flag{-5, true}));
}

TEST_F(SystemInfoTest, OtherValuesAndKeysFailAsWell) {
    device("[system_info]\n12345=1\n[results]\nsystem_info/12345=-5\nfeatures/another/key=-7\n");

    EXPECT_EQ(valueNumber(12345), (Number{-5, UNTOUCHED}));
    EXPECT_EQ(customText("another/key"), (Text{-7, "<untouched>"}));
}

TEST_F(SystemInfoTest, ResultThatIsSuccessOrIsForAnotherFactFailsNothing) {
    device("[system_info]\notn_onoff=3\n[results]\nsystem_info/otn_onoff=0\nsystem_info/902=-5\notn_onoff=-5\n"
           "system_info/ota_support=-5\n");

    EXPECT_EQ(valueNumber(902), (Number{0, 3}));
    EXPECT_EQ(valueNumber(890), (Number{-5, UNTOUCHED}));
}

TEST_F(SystemInfoTest, ResultThatIsNoNumberIsReportedAndFailsNothing) {
    device("[results]\nsystem_info/otn_onoff=fail\n");

    EXPECT_EQ(errorsOf([] {
                  EXPECT_EQ(valueNumber(902), (Number{0, 1}));
                  EXPECT_EQ(valueNumber(902), (Number{0, 1}));
              }),
              path() + ": line 2: 'system_info/otn_onoff' in [results] is no number of 32 bits: 'fail'; using the "
                       "default\n");
}

TEST_F(SystemInfoTest, NullPointerForTheValueIsAnInvalidParameter) {
    EXPECT_EQ(system_info_get_value_int(SYSTEM_INFO_KEY_OTN_ONOFF, nullptr), -22);
    EXPECT_EQ(system_info_get_value_bool(SYSTEM_INFO_KEY_OTN_ONOFF, nullptr), -22);
    EXPECT_EQ(system_info_get_value_string(SYSTEM_INFO_KEY_LOCALSET, nullptr), -22);
    EXPECT_EQ(system_info_get_custom_int(HEIGHT.c_str(), nullptr), -22);
    EXPECT_EQ(system_info_get_custom_bool(HEIGHT.c_str(), nullptr), -22);
    EXPECT_EQ(system_info_get_custom_string(HEIGHT.c_str(), nullptr), -22);
}

TEST_F(SystemInfoTest, NullKeyIsAnInvalidParameter) {
    int number = 0;
    bool flag = false;
    char* text = nullptr;
    EXPECT_EQ(system_info_get_custom_int(nullptr, &number), -22);
    EXPECT_EQ(system_info_get_custom_bool(nullptr, &flag), -22);
    EXPECT_EQ(system_info_get_custom_string(nullptr, &text), -22);
}

TEST_F(SystemInfoTest, ChangeIsSeenAtOnce) {
    for (const char* height : {"540", "541", "1080"}) {
        device("[features]\n" + HEIGHT + "=" + height + "\n");
        EXPECT_EQ(customNumber(HEIGHT), (Number{0, std::stoi(height)}));
    }
    std::filesystem::remove(path());
    EXPECT_EQ(customNumber(HEIGHT), (Number{0, 2160}));
}

TEST_F(SystemInfoTest, TextMayBeEmptyOrHaveEscapes) {
    device("[system_info]\nlocalset=\nmodel_line=\\sa\\nb\n");

    EXPECT_EQ(valueText(90), (Text{0, ""}));
    EXPECT_EQ(valueText(0), (Text{0, " a\nb"}));
}

TEST_F(SystemInfoTest, ValueOfTheWrongTypeHasItsDefaultAndTheRestIsUsed) {
    device("[system_info]\notn_onoff=0\nota_support=maybe\n\n[features]\n" + HEIGHT + "=540\n");

    EXPECT_EQ(errorsOf([] {
                  for (int time = 0; time < 3; ++time) {
                      EXPECT_EQ(valueNumber(890), (Number{0, 1}));
                      EXPECT_EQ(valueNumber(902), (Number{0, 0}));
                      EXPECT_EQ(customNumber(HEIGHT), (Number{0, 540}));
                  }
              }),
              path() +
                  ": line 3: 'ota_support' in [system_info] is no number of 32 bits: 'maybe'; using the default\n");
}

TEST_F(SystemInfoTest, ValueThatStaysWrongIsNotReportedAgainWhenAnotherChanges) {
    device("[system_info]\nota_support=maybe\n");
    errorsOf([] { valueNumber(890); });
    device("[system_info]\notn_onoff=0\nota_support=maybe\n");

    EXPECT_EQ(errorsOf([] { valueNumber(890); }), "");
}

TEST_F(SystemInfoTest, ValueThatIsWrongInAnotherWayIsReportedAgain) {
    device("[system_info]\nota_support=maybe\n");
    errorsOf([] { valueNumber(890); });
    device("[system_info]\nota_support=perhaps\n");

    EXPECT_THAT(errorsOf([] { valueNumber(890); }), HasSubstr("'perhaps'"));
}

TEST_F(SystemInfoTest, ValueThatIsWrongAgainIsReportedAgain) {
    const std::string wrong = "[system_info]\nota_support=maybe\n";
    device(wrong);
    errorsOf([] { valueNumber(890); });
    device("[system_info]\nota_support=0\n");
    EXPECT_EQ(errorsOf([] { EXPECT_EQ(valueNumber(890), (Number{0, 0})); }), "");
    device(wrong);

    EXPECT_THAT(errorsOf([] { valueNumber(890); }), HasSubstr("'maybe'"));
}

TEST_F(SystemInfoTest, ValueThatIsWrongInANewFileIsReportedAgain) {
    const std::string wrong = "[system_info]\nota_support=maybe\n";
    device(wrong);
    errorsOf([] { valueNumber(890); });
    std::filesystem::remove(path());
    EXPECT_EQ(errorsOf([] { EXPECT_EQ(valueNumber(890), (Number{0, 1})); }), "");
    device(wrong);

    EXPECT_THAT(errorsOf([] { valueNumber(890); }), HasSubstr("'maybe'"));
}

TEST_F(SystemInfoTest, BadFileIsReportedOnceAndEverythingHasItsDefault) {
    device("[system_info]\notn_onoff=0\n\nlocalset\n");

    EXPECT_EQ(errorsOf([] {
                  for (int time = 0; time < 3; ++time) {
                      EXPECT_EQ(valueNumber(902), (Number{0, 1}));
                      EXPECT_EQ(valueText(90), (Text{0, "EU"}));
                      EXPECT_EQ(valueNumber(12345), NO_NUMBER);
                  }
              }),
              path() + ": line 4: Key file contains line “localset” which is not a key-value pair, group, or comment; "
                       "using the defaults\n");
}

TEST_F(SystemInfoTest, FileThatIsBadAgainOrForAnotherReasonIsReportedAgain) {
    const auto ask = [] { valueNumber(902); };
    device("a");
    EXPECT_THAT(errorsOf(ask), HasSubstr("line 1: "));
    device("[x]\nb");
    EXPECT_THAT(errorsOf(ask), HasSubstr("line 2: "));
    device("[system_info]\notn_onoff=0\n");
    EXPECT_EQ(errorsOf([] { EXPECT_EQ(valueNumber(902), (Number{0, 0})); }), "");
    device("a");
    EXPECT_THAT(errorsOf(ask), HasSubstr("line 1: "));
}

TEST_F(SystemInfoTest, FileThatIsTooLargeIsReportedOnce) {
    device("[system_info]\notn_onoff=0\n#" + std::string(1 << 20, 'x'));

    EXPECT_EQ(errorsOf([] {
                  EXPECT_EQ(valueNumber(902), (Number{0, 1}));
                  EXPECT_EQ(valueNumber(902), (Number{0, 1}));
              }),
              path() + ": larger than 65536 bytes; using the defaults\n");
}

TEST_F(SystemInfoTest, FolderInItsPlaceIsReportedOnceUntilTheFileIsBack) {
    device("[system_info]\notn_onoff=0\n");
    EXPECT_EQ(valueNumber(902), (Number{0, 0}));
    std::filesystem::remove(path());
    std::filesystem::create_directory(path());
    EXPECT_EQ(errorsOf([] {
                  EXPECT_EQ(valueNumber(902), (Number{0, 1}));
                  EXPECT_EQ(valueNumber(902), (Number{0, 1}));
              }),
              path() + ": Is a directory; using the defaults\n");
    std::filesystem::remove(path());
    device("[system_info]\notn_onoff=0\n");

    EXPECT_EQ(errorsOf([] { EXPECT_EQ(valueNumber(902), (Number{0, 0})); }), "");
}

TEST_F(SystemInfoTest, DefaultFileSaysExactlyTheDefaults) {
    const std::string text = KovanHost::defaultDeviceText();
    const KovanHost::KeyFile file(text);
    for (const DeviceFact& fact : KovanHost::deviceFacts()) {
        EXPECT_TRUE(file.raw(fact.group, fact.name)) << fact.name;
    }
    device(text);
    for (const DeviceFact& fact : KovanHost::deviceFacts()) {
        EXPECT_EQ(errorsOf([&] { EXPECT_TRUE(fact.fallback == KovanHost::valueOf(fact)) << fact.name; }), "");
    }
}

TEST_F(SystemInfoTest, ThreadsMayAskWhileTheFileChanges) {
    std::vector<std::thread> threads;
    std::atomic<int> others{0};
    for (int index = 0; index < 4; ++index) {
        threads.emplace_back([&others] {
            for (int time = 0; time < 200; ++time) {
                const Number number = valueNumber(284);
                others += number != Number(0, 1) && number != Number(0, 24);
            }
        });
    }
    for (int time = 0; time < 100; ++time) {
        KovanHost::changeDevice(
            [time](KovanHost::KeyFile& file) { file.set("system_info", "sales_region", time % 2 == 0 ? "24" : "1"); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(others, 0);
}
