#include <limits>
#include <locale>
#include <string>

#include <boost/optional/optional_io.hpp>
#include <gmock/gmock.h>

#include "DAXCommon/DAXCommonUtils.h"
#include "support/FakeKovan.h"

using namespace DAX::DAXCommon::DAXCommonUtils;
using testing::ElementsAre;

namespace {

// While the object lives, streams write 1234567.5 as "1.234.567,5".
class ForeignLocale {
public:
    ForeignLocale() = default;
    ForeignLocale(const ForeignLocale&) = delete;
    ForeignLocale& operator=(const ForeignLocale&) = delete;
    ~ForeignLocale() { std::locale::global(m_before); }

private:
    struct Punctuation : std::numpunct<char> {
        char do_decimal_point() const override { return ','; }
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\3"; }
    };

    const std::locale m_before = std::locale::global(std::locale(std::locale::classic(), new Punctuation));
};

struct Unpacked {
    explicit Unpacked(const std::string& text) : good(unpackStandaloneProgressValue(text, progress, detail)) {}

    int progress = -7;
    boost::optional<float> detail = -7.5F;
    bool good;
};

TEST(PackStandaloneProgressValue, WritesTheProgressAlone) {
    EXPECT_EQ(packStandaloneProgressValue(42, boost::none), "42");
    EXPECT_EQ(packStandaloneProgressValue(0, boost::none), "0");
}

TEST(PackStandaloneProgressValue, WritesTheDetailBehindABar) {
    EXPECT_EQ(packStandaloneProgressValue(42, 3.5F), "42|3.5");
    EXPECT_EQ(packStandaloneProgressValue(42, 0.0F), "42|0");
    EXPECT_EQ(packStandaloneProgressValue(-1, -0.25F), "-1|-0.25");
}

TEST(PackStandaloneProgressValue, KeepsSixDigitsOfTheDetail) {
    EXPECT_EQ(packStandaloneProgressValue(1, 3.14159274F), "1|3.14159");
    EXPECT_EQ(packStandaloneProgressValue(1, 1e10F), "1|1e+10");
}

TEST(PackStandaloneProgressValue, IgnoresTheGlobalLocale) {
    const ForeignLocale locale;
    EXPECT_EQ(packStandaloneProgressValue(1234567, 1234.5F), "1234567|1234.5");
}

TEST(UnpackStandaloneProgressValue, ReadsBackAProgressWithoutDetail) {
    const Unpacked unpacked(packStandaloneProgressValue(42, boost::none));
    EXPECT_TRUE(unpacked.good);
    EXPECT_EQ(unpacked.progress, 42);
    EXPECT_EQ(unpacked.detail, boost::none);
}

TEST(UnpackStandaloneProgressValue, ReadsBackAProgressWithDetail) {
    const Unpacked unpacked(packStandaloneProgressValue(42, 3.5F));
    EXPECT_TRUE(unpacked.good);
    EXPECT_EQ(unpacked.progress, 42);
    EXPECT_EQ(unpacked.detail, 3.5F);
}

TEST(UnpackStandaloneProgressValue, ReadsBackTheGreatestAndTheLeastProgress) {
    for (const int progress : {std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        const Unpacked unpacked(packStandaloneProgressValue(progress, 1e-5F));
        EXPECT_TRUE(unpacked.good);
        EXPECT_EQ(unpacked.progress, progress);
        EXPECT_EQ(unpacked.detail, 1e-5F);
    }
}

TEST(UnpackStandaloneProgressValue, IgnoresTheGlobalLocale) {
    const ForeignLocale locale;
    const Unpacked unpacked("1234567|1234.5");
    EXPECT_TRUE(unpacked.good);
    EXPECT_EQ(unpacked.progress, 1234567);
    EXPECT_EQ(unpacked.detail, 1234.5F);
}

TEST(UnpackStandaloneProgressValue, LogsNothingWhenItSucceeds) {
    EXPECT_TRUE(Unpacked("42|3.5").good);
    EXPECT_THAT(FakeKovan::messages(), ElementsAre());
}

TEST(UnpackStandaloneProgressValue, RefusesAnotherSeparatorWithALogLine) {
    EXPECT_FALSE(Unpacked("42;3").good);
    EXPECT_THAT(FakeKovan::messages(), ElementsAre("Unpacking progess value from 42;3 failed!"));
    EXPECT_THAT(FakeKovan::messages("ERR"), ElementsAre("Unpacking progess value from 42;3 failed!"));
}

class RefusedProgress : public testing::TestWithParam<std::string> {};

TEST_P(RefusedProgress, LeavesALogLineAndTheValuesAsTheyWere) {
    const Unpacked unpacked(GetParam());
    EXPECT_FALSE(unpacked.good);
    EXPECT_EQ(unpacked.progress, -7);
    EXPECT_EQ(unpacked.detail, -7.5F);
    EXPECT_THAT(FakeKovan::messages("ERR"), ElementsAre("Unpacking progess value from " + GetParam() + " failed!"));
}

INSTANTIATE_TEST_SUITE_P(NotANumberInFront, RefusedProgress, testing::Values("", "|3.5", "x42", "-", "2147483648"));
INSTANTIATE_TEST_SUITE_P(NotANumberBehind, RefusedProgress,
                         testing::Values("42|", "42|x", "42|3,5", "42|nan", "42|1e99"));
INSTANTIATE_TEST_SUITE_P(MoreThanThat, RefusedProgress, testing::Values("42x", "42|3.5x", "42|3.5|1", "42||3.5"));
INSTANTIATE_TEST_SUITE_P(Blanks, RefusedProgress, testing::Values(" 42", "42 ", "42 |3.5", "42| 3.5", "42|3.5\n"));

} // namespace
