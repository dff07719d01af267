#include "DebugFileFixture.h"

namespace DAX::Tests {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Text = boost::optional<std::string>;
using Number = boost::optional<int>;
using Flag = boost::optional<bool>;

class CustomParams : public ::testing::Test {
protected:
    static std::vector<std::string> log() { return FakeKovan::journal(); }

    DebugAndTestParameters parameters;
};

TEST_F(CustomParams, ShowTheirFormByTwoDefaults) {
    EXPECT_EQ(parameters.getCustomStringParam("testParam0"), Text("0"));
    EXPECT_EQ(parameters.getCustomIntParam("testParam0"), Number(0));
    EXPECT_EQ(parameters.getCustomStringParam("testParam1"), Text("testStringValue1"));
}

TEST_F(CustomParams, AnAbsentOneIsDisengagedInEveryForm) {
    EXPECT_EQ(parameters.getCustomStringParam("absent"), Text());
    EXPECT_EQ(parameters.getCustomIntParam("absent"), Number());
    EXPECT_EQ(parameters.getCustomBoolParam("absent"), Flag());
    EXPECT_THAT(log(), IsEmpty());
}

TEST_F(CustomParams, AnAbsentOneGivesTheDefault) {
    EXPECT_EQ(parameters.getCustomStringParam("absent", "default"), "default");
    EXPECT_EQ(parameters.getCustomIntParam("absent", -5), -5);
    EXPECT_TRUE(parameters.getCustomBoolParam("absent", true));
    EXPECT_FALSE(parameters.getCustomBoolParam("absent", false));
}

TEST_F(CustomParams, AnExistingOneDoesNotGiveTheDefault) {
    parameters.setCustomStringParam("zero", Text("0"));
    EXPECT_EQ(parameters.getCustomStringParam("zero", "default"), "0");
    EXPECT_EQ(parameters.getCustomIntParam("zero", -5), 0);
    EXPECT_FALSE(parameters.getCustomBoolParam("zero", true));
}

TEST_F(CustomParams, EveryNumberButZeroIsTrue) {
    for (const char* value : {"1", "-1", "2147483647"}) {
        parameters.setCustomStringParam("flag", Text(value));
        EXPECT_EQ(parameters.getCustomBoolParam("flag"), Flag(true)) << value;
    }
    parameters.setCustomStringParam("flag", Text("0"));
    EXPECT_EQ(parameters.getCustomBoolParam("flag"), Flag(false));
}

TEST_F(CustomParams, ATextIsNoNumberAndIsLoggedOnce) {
    parameters.setCustomStringParam("name", Text("abc"));
    EXPECT_EQ(parameters.getCustomIntParam("name"), Number());
    EXPECT_THAT(log(), ElementsAre("log ERR Getting custom debug parameter name: abc can not be converted to integer. "
                                   "Exception: stoi"));
    EXPECT_EQ(parameters.getCustomStringParam("name"), Text("abc"));
}

TEST_F(CustomParams, ATooLargeNumberIsDisengagedAndIsLoggedOnce) {
    parameters.setCustomStringParam("name", Text("2147483648"));
    EXPECT_EQ(parameters.getCustomIntParam("name"), Number());
    EXPECT_THAT(log(), ElementsAre("log ERR Getting custom debug parameter name: 2147483648 is out of the range of "
                                   "representable values. Exception: stoi"));
}

TEST_F(CustomParams, ATextGivesTheDefaultOfNumbersAndFlags) {
    parameters.setCustomStringParam("name", Text("abc"));
    EXPECT_EQ(parameters.getCustomIntParam("name", 3), 3);
    EXPECT_TRUE(parameters.getCustomBoolParam("name", true));
    EXPECT_EQ(parameters.getCustomBoolParam("name"), Flag());
}

TEST_F(CustomParams, ANumberEndsAtTheFirstOtherCharacter) {
    parameters.setCustomStringParam("name", Text(" 12 months"));
    EXPECT_EQ(parameters.getCustomIntParam("name"), Number(12));
}

TEST_F(CustomParams, AreReplacedByLaterValues) {
    parameters.setCustomStringParam("name", Text("first"));
    parameters.setCustomStringParam("name", Text("second"));
    EXPECT_EQ(parameters.getCustomStringParam("name"), Text("second"));
}

TEST_F(CustomParams, ADisengagedValueErasesInEveryForm) {
    const auto erasedBy = [this](auto erase) {
        parameters.setCustomStringParam("name", Text("1"));
        erase();
        return parameters.getCustomStringParam("name") == boost::none &&
               parameters.getCustomIntParam("name") == boost::none &&
               parameters.getCustomBoolParam("name") == boost::none;
    };
    EXPECT_TRUE(erasedBy([this] { parameters.setCustomStringParam("name", boost::none); }));
    EXPECT_TRUE(erasedBy([this] { parameters.setCustomIntParam("name", boost::none); }));
    EXPECT_TRUE(erasedBy([this] { parameters.setCustomBoolParam("name", boost::none); }));
}

TEST_F(CustomParams, AnAbsentOneMayBeErased) {
    parameters.setCustomStringParam("absent", boost::none);
    EXPECT_EQ(parameters.getCustomStringParam("absent"), Text());
}

TEST_F(CustomParams, NumbersAndFlagsAreKeptAsDecimalText) {
    parameters.setCustomIntParam("number", -2147483647);
    parameters.setCustomBoolParam("yes", true);
    parameters.setCustomBoolParam("no", false);
    EXPECT_EQ(parameters.getCustomStringParam("number"), Text("-2147483647"));
    EXPECT_EQ(parameters.getCustomStringParam("yes"), Text("1"));
    EXPECT_EQ(parameters.getCustomStringParam("no"), Text("0"));
}

} // namespace
} // namespace DAX::Tests
