// What a program says when its standard output cannot be written.
#include "clients_common/Output.h"

#include <nlohmann/json.hpp>

#include "LostOutput.h"
#include "RunProgram.h"

namespace DAX::Tests {
namespace {

const char* const FULL = "tool: The standard output cannot be written: No space left on device\n";

void addShow(clients_common::Program& program) {
    program.addVersion();
    program.addCommand("show", "", [](bool json) {
        if (json) {
            clients_common::printJson({{"a", 1}});
        } else {
            std::printf("shown\n");
        }
        return 0;
    });
}

ProgramRun runOnAFullDisk(const std::vector<const char*>& arguments) {
    testing::internal::CaptureStderr();
    int status = 0;
    {
        const LostOutput lost;
        clients_common::Program program("tool", "For tests.");
        program.requireCommand();
        addShow(program);
        std::vector<const char*> line = {"tool"};
        line.insert(line.end(), arguments.begin(), arguments.end());
        status = program.run(static_cast<int>(line.size()), line.data());
    }
    return {status, "", testing::internal::GetCapturedStderr()};
}

TEST(Output, EndsTheProgramWithOneWhenItIsLost) {
    for (const std::vector<const char*>& arguments :
         {std::vector<const char*>{"show"}, {"show", "--json"}, {"--version"}, {"--help"}}) {
        const ProgramRun run = runOnAFullDisk(arguments);
        EXPECT_EQ(run.status, 1) << arguments[0];
        EXPECT_EQ(run.errors, FULL) << arguments[0];
    }
}

TEST(Output, IsWrittenWhenTheProgramEnds) {
    const ProgramRun run = runProgram(addShow, {"show"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.output, "shown\n");
    EXPECT_EQ(run.errors, "");
}

} // namespace
} // namespace DAX::Tests
