#include "RunProgram.h"

namespace DAX::Tests {
namespace {

TEST(Version, IsPrintedBehindTheProgramsName) {
    const ProgramRun run = runProgram([](clients_common::Program& program) { program.addVersion(); }, {"--version"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.output, "tool " PROJECT_VERSION "\n");
    EXPECT_EQ(run.errors, "");
}

} // namespace
} // namespace DAX::Tests
