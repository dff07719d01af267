// An option that may stand alone.
#include <gmock/gmock.h>

#include "RunProgram.h"

namespace DAX::Tests {
namespace {

using namespace testing;

class OptionalNumber : public Test {
protected:
    ProgramRun run(const std::vector<const char*>& arguments) {
        isGiven = false;
        number.reset();
        return runProgram(
            [this](clients_common::Program& program) {
                auto command = program.addCommand("sleep", "", [](bool) { return 0; });
                command.addWithOptionalNumber("--wait", isGiven, number, "SECONDS", "How long");
                command.addFlag("--deep", isDeep, "");
            },
            arguments);
    }

    bool isGiven = false;
    bool isDeep = false;
    std::optional<int> number;
};

TEST_F(OptionalNumber, IsAbsent) {
    EXPECT_EQ(run({"sleep"}).status, 0);
    EXPECT_FALSE(isGiven);
}

TEST_F(OptionalNumber, StandsAlone) {
    EXPECT_EQ(run({"sleep", "--wait", "--deep"}).status, 0);
    EXPECT_TRUE(isGiven);
    EXPECT_FALSE(number.has_value());
    EXPECT_EQ(run({"sleep", "--wait"}).status, 0);
    EXPECT_TRUE(isGiven);
}

TEST_F(OptionalNumber, HasItsNumber) {
    EXPECT_EQ(run({"sleep", "--wait=30"}).status, 0);
    EXPECT_TRUE(isGiven);
    EXPECT_EQ(number, 30);
    EXPECT_EQ(run({"sleep", "--wait=0"}).status, 0);
    EXPECT_EQ(number, 0);
}

TEST_F(OptionalNumber, RefusesAllElse) {
    for (const char* const text : {"--wait=-1", "--wait=long", "--wait=99999999999", "--wait=1.5"}) {
        EXPECT_EQ(run({"sleep", text}).status, 2) << text;
    }
}

} // namespace
} // namespace DAX::Tests
