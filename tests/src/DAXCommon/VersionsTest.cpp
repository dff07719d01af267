#include <string>
#include <utility>

#include <boost/lexical_cast/bad_lexical_cast.hpp>
#include <gmock/gmock.h>

#include "DAXCommon/DAXCommonUtils.h"
#include "support/FakeKovan.h"
#include "support/Thrown.h"

using namespace DAX::DAXCommon::DAXCommonUtils;
using DAX::Common::Utils::errinfo_rethrows;
using DAX::Tests::textOf;
using testing::ElementsAre;
using testing::Pair;

namespace {

std::pair<int, int> parsed(const std::string& version) {
    std::pair<int, int> numbers{-7, -8};
    parseVersion(version, numbers.first, numbers.second);
    return numbers;
}

TEST(ParseVersion, TakesTheNumbersBeforeAndBehindThePoint) {
    EXPECT_THAT(parsed("1666.1234"), Pair(1666, 1234));
}

TEST(ParseVersion, TakesZeroForAMissingMinorNumber) {
    EXPECT_THAT(parsed("1234"), Pair(1234, 0));
}

TEST(ParseVersion, AcceptsSigns) {
    EXPECT_THAT(parsed("-12.+34"), Pair(-12, 34));
    EXPECT_THAT(parsed("+12.-34"), Pair(12, -34));
}

TEST(ParseVersion, ReachesTheLimitsOfAnInt) {
    EXPECT_THAT(parsed("2147483647.-2147483648"), Pair(2147483647, -2147483647 - 1));
}

TEST(ParseVersion, IgnoresZerosInFront) {
    EXPECT_THAT(parsed("0012.05"), Pair(12, 5));
}

class RefusedVersion : public testing::TestWithParam<std::string> {};

TEST_P(RefusedVersion, RaisesBadLexicalCastAndLeavesTheNumbersAsTheyWere) {
    int major = -7;
    int minor = -8;
    EXPECT_THROW(parseVersion(GetParam(), major, minor), boost::bad_lexical_cast);
    EXPECT_EQ(major, -7);
    EXPECT_EQ(minor, -8);
}

INSTANTIATE_TEST_SUITE_P(TwoPoints, RefusedVersion, testing::Values("12.34.56", "12..34", "12.34."));
INSTANTIATE_TEST_SUITE_P(EmptyParts, RefusedVersion, testing::Values("", ".", "12.", ".34"));
INSTANTIATE_TEST_SUITE_P(OtherCharacters, RefusedVersion,
                         testing::Values("a.1", "1.a", " 1.2", "1.2 ", "0x1.2", "1,2", "-"));
INSTANTIATE_TEST_SUITE_P(NumbersOutOfRange, RefusedVersion,
                         testing::Values("2147483648.0", "0.2147483648", "-2147483649"));

TEST(ParseVersion, AddsTheVersionToTheExceptionOnItsWayUp) {
    try {
        parsed("12.34.56");
        FAIL();
    } catch (const boost::exception& exception) {
        EXPECT_EQ(textOf<errinfo_rethrows>(exception), "Parsing the version 12.34.56");
    }
}

TEST(ParseVersion, LogsNothing) {
    EXPECT_THROW(parsed("x"), boost::bad_lexical_cast);
    parsed("1.2");
    EXPECT_THAT(FakeKovan::messages(), ElementsAre());
}

struct ModelAndVersion {
    explicit ModelAndVersion(const std::string& text) : good(parsedModelAndVersion(text, model, major, minor)) {}

    std::string model = "before";
    unsigned short major = 7;
    unsigned short minor = 8;
    bool good;
};

TEST(ParsedModelAndVersion, TakesTheTextApart) {
    const ModelAndVersion parts("MODEL-1666.1234");
    EXPECT_TRUE(parts.good);
    EXPECT_EQ(parts.model, "MODEL");
    EXPECT_EQ(parts.major, 1666);
    EXPECT_EQ(parts.minor, 1234);
}

TEST(ParsedModelAndVersion, LogsWhatItGotAndWhatItMadeOfIt) {
    const ModelAndVersion parts("MODEL-0012.34");
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log DBG parsedModelAndVersion got version string 'MODEL-0012.34'",
                                                  "log DBG version string: 0012.34", "log DBG version:12.34"));
}

TEST(ParsedModelAndVersion, KeepsTheFirstOfTwoDashesInTheModel) {
    const ModelAndVersion parts("T-MODEL-12.34");
    EXPECT_TRUE(parts.good);
    EXPECT_EQ(parts.model, "T-MODEL");
    EXPECT_EQ(parts.major, 12);
    EXPECT_EQ(parts.minor, 34);
}

TEST(ParsedModelAndVersion, TakesZeroForAMissingMinorNumber) {
    const ModelAndVersion parts("MODEL-12");
    EXPECT_TRUE(parts.good);
    EXPECT_EQ(parts.major, 12);
    EXPECT_EQ(parts.minor, 0);
}

TEST(ParsedModelAndVersion, AcceptsAnEmptyModel) {
    const ModelAndVersion parts("-12.34");
    EXPECT_TRUE(parts.good);
    EXPECT_EQ(parts.model, "");
    EXPECT_EQ(parts.major, 12);
}

TEST(ParsedModelAndVersion, RefusesATextWithoutDash) {
    const ModelAndVersion parts("MODEL 12.34");
    EXPECT_FALSE(parts.good);
    EXPECT_EQ(parts.model, "before");
    EXPECT_EQ(parts.major, 7);
    EXPECT_EQ(parts.minor, 8);
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log DBG parsedModelAndVersion got version string 'MODEL 12.34'",
                            "log ERR parsedModelAndVersion: Wrong string format - lack of dash: MODEL 12.34"));
}

TEST(ParsedModelAndVersion, LetsAWrongVersionPassBehindItsLogLines) {
    std::string model;
    unsigned short major = 7;
    unsigned short minor = 8;
    EXPECT_THROW(parsedModelAndVersion("MODEL-12.x", model, major, minor), boost::bad_lexical_cast);
    EXPECT_EQ(model, "MODEL");
    EXPECT_EQ(major, 7);
    EXPECT_EQ(minor, 8);
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log DBG parsedModelAndVersion got version string 'MODEL-12.x'",
                                                  "log DBG version string: 12.x"));
}

TEST(ParsedModelAndVersion, RaisesBadLexicalCastWhenNothingFollowsTheDash) {
    EXPECT_THROW(ModelAndVersion("MODEL-"), boost::bad_lexical_cast);
}

TEST(ParsedModelAndVersion, KeepsTheLowSixteenBitsOfTheNumbers) {
    const ModelAndVersion parts("MODEL-65535.65538");
    EXPECT_EQ(parts.major, 65535);
    EXPECT_EQ(parts.minor, 2);
    EXPECT_THAT(FakeKovan::messages("DBG").back(), "version:65535.2");
}

TEST(VersionStringForUI, IsTheMajorNumberAlone) {
    EXPECT_EQ(versionStringForUI("1666.1234"), "1666");
    EXPECT_EQ(versionStringForUI("1666"), "1666");
    EXPECT_EQ(versionStringForUI("0012.5"), "12");
}

TEST(VersionStringForUI, ShowsTheSignOfANegativeNumberOnly) {
    EXPECT_EQ(versionStringForUI("-12.5"), "-12");
    EXPECT_EQ(versionStringForUI("+12.5"), "12");
    EXPECT_EQ(versionStringForUI("-2147483648"), "-2147483648");
}

TEST(VersionStringForUI, RefusesAWrongMinorNumberThatItWouldNotShow) {
    EXPECT_THROW(versionStringForUI("12.x"), boost::bad_lexical_cast);
}

} // namespace
