#include <functional>
#include <stdexcept>
#include <string>
#include <utility>

#include "SystemInfoFixture.h"
#include "support/CompilerText.h"
#include "support/NamedRow.h"
#include "support/ProcessDeath.h"

namespace DAX::Tests {
namespace {

using Common::Utils::errinfo_description;
using Common::Utils::errinfo_stream_text;
using Platform::ISystemInfo;
using testing::ElementsAre;

const char CUSTOM[] = "com.velmora/a/key";

TEST(PlatformFact, IsThatOfItsNumber) {
    FakeKovan::setSystemInfo(7, 42);
    FakeKovan::setSystemInfo(8, true);
    FakeKovan::setSystemInfo(9, "a text");
    EXPECT_EQ(ISystemInfo::getSystemInfoInt(7), 42);
    EXPECT_TRUE(ISystemInfo::getSystemInfoBool(8));
    EXPECT_EQ(ISystemInfo::getSystemInfoString(9), "a text");
    EXPECT_THAT(FakeKovan::systemInfoReads(), ElementsAre("7", "8", "9"));
}

TEST(PlatformFact, IsThatOfItsKey) {
    FakeKovan::setSystemInfo(CUSTOM, 42);
    EXPECT_EQ(ISystemInfo::getSystemInfoCustomInt(CUSTOM), 42);
    FakeKovan::setSystemInfo(CUSTOM, true);
    EXPECT_TRUE(ISystemInfo::getSystemInfoCustomBool(CUSTOM));
    FakeKovan::setSystemInfo(CUSTOM, "a text");
    EXPECT_EQ(ISystemInfo::getSystemInfoCustomString(CUSTOM), "a text");
}

TEST(PlatformFact, MayBeFalseZeroOrEmpty) {
    FakeKovan::setSystemInfo(7, 0);
    FakeKovan::setSystemInfo(8, false);
    FakeKovan::setSystemInfo(9, "");
    EXPECT_EQ(ISystemInfo::getSystemInfoInt(7), 0);
    EXPECT_FALSE(ISystemInfo::getSystemInfoBool(8));
    EXPECT_EQ(ISystemInfo::getSystemInfoString(9), "");
}

TEST(PlatformFact, AssertsThatATextOfANumberIsThere) {
    FakeKovan::setSystemInfo(9, nullptr);
    EXPECT_ASSERTION_WITHOUT_MSG(ISystemInfo::getSystemInfoString(9), "chValue != nullptr");
}

TEST(PlatformFact, ThrowsWhenATextOfAKeyIsNotThere) {
    FakeKovan::setSystemInfo(CUSTOM, nullptr);
    EXPECT_THROW(ISystemInfo::getSystemInfoCustomString(CUSTOM), std::logic_error);
}

struct Read : NamedRow {
    std::function<void()> operation;
    std::string key;
};

class FailedPlatformFact : public testing::TestWithParam<Read> {
protected:
    static void fail(int result) { FakeKovan::failSystemInfo(GetParam().key, result); }
};

const std::string FAILURE = "Error during getting system-info value: ";

TEST_P(FailedPlatformFact, IsAnInvalidParameter) {
    fail(-22);
    EXPECT_EQ(thrownDescription(GetParam().operation), FAILURE + "SYSTEM_INFO_ERROR_INVALID_PARAMETER");
    EXPECT_EQ(thrownText<errinfo_stream_text>(GetParam().operation), "<no such text>");
}

TEST_P(FailedPlatformFact, IsAnInputOutputError) {
    fail(-5);
    EXPECT_EQ(thrownDescription(GetParam().operation), FAILURE + "SYSTEM_INFO_ERROR_IO_ERROR");
    EXPECT_EQ(thrownText<errinfo_stream_text>(GetParam().operation), "<no such text>");
}

TEST_P(FailedPlatformFact, IsAnUnrecognizedError) {
    for (const int result : {-1, 1, -4}) {
        fail(result);
        EXPECT_EQ(thrownText<errinfo_stream_text>(GetParam().operation),
                  FAILURE + "unrecognized error value: " + std::to_string(result));
        EXPECT_EQ(thrownText<errinfo_description>(GetParam().operation), "<no such text>");
    }
}

INSTANTIATE_TEST_SUITE_P(
    Of, FailedPlatformFact,
    testing::Values(Read{"Int", [] { ISystemInfo::getSystemInfoInt(7); }, "7"},
                    Read{"Bool", [] { ISystemInfo::getSystemInfoBool(7); }, "7"},
                    Read{"String", [] { ISystemInfo::getSystemInfoString(7); }, "7"},
                    Read{"CustomInt", [] { ISystemInfo::getSystemInfoCustomInt(CUSTOM); }, CUSTOM},
                    Read{"CustomBool", [] { ISystemInfo::getSystemInfoCustomBool(CUSTOM); }, CUSTOM},
                    Read{"CustomString", [] { ISystemInfo::getSystemInfoCustomString(CUSTOM); }, CUSTOM}),
    rowName);

TEST(PlatformFact, FailsAtTheOperationThatAsksForIt) {
    FakeKovan::failSystemInfo(7, -5);
    FakeKovan::failSystemInfo(CUSTOM, -5);
    const std::string TEXT = compilerText("const char*", "const char *");
    const std::pair<std::string, std::function<void()>> OPERATIONS[] = {
        {"m_getSystemInfoInt(int)", [] { ISystemInfo::getSystemInfoInt(7); }},
        {"m_getSystemInfoBool(int)", [] { ISystemInfo::getSystemInfoBool(7); }},
        {"m_getSystemInfoString(int)", [] { ISystemInfo::getSystemInfoString(7); }},
        {"m_getSystemInfoCustomBool(" + TEXT + ")", [] { ISystemInfo::getSystemInfoCustomBool(CUSTOM); }},
        {"m_getSystemInfoCustomInt(" + TEXT + ")", [] { ISystemInfo::getSystemInfoCustomInt(CUSTOM); }},
        {"m_getSystemInfoCustomString(" + TEXT + ")", [] { ISystemInfo::getSystemInfoCustomString(CUSTOM); }},
    };
    int line = 0; // they are in the source in this order
    for (const auto& [name, operation] : OPERATIONS) {
        const ThrowSite site = siteThrownBy(operation);
        EXPECT_THAT(site.function, testing::HasSubstr("CSystemInfo::" + name));
        EXPECT_GT(site.line, line) << name;
        line = site.line;
    }
}

} // namespace
} // namespace DAX::Tests
