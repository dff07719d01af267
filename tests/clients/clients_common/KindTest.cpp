// How the end of a command is told apart.
#include <stdexcept>

#include <nlohmann/json.hpp>

#include "RunProgram.h"

namespace DAX::Tests {
namespace {

using Json = nlohmann::json;

ProgramRun runThrowing(const std::function<void()>& action, const std::vector<const char*>& arguments) {
    return runProgram(
        [&action](clients_common::Program& program) {
            program.addCommand("do", "", [&action](bool) {
                action();
                return 0;
            });
        },
        arguments);
}

TEST(Kind, OfARefusalIsRefused) {
    const ProgramRun run = runThrowing([] { throw clients_common::Refusal("no"); }, {"do", "--json"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(Json::parse(run.output), Json({{"error", "no"}, {"kind", "refused"}}));
    EXPECT_EQ(run.errors, "tool: no\n");
}

TEST(Kind, OfAnyOtherExceptionIsFailed) {
    const ProgramRun run = runThrowing([] { throw std::runtime_error("broken"); }, {"do", "--json"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(Json::parse(run.output), Json({{"error", "broken"}, {"kind", "failed"}}));
}

TEST(Kind, OfAWrongArgumentIsUsage) {
    const ProgramRun run = runThrowing([] { throw clients_common::WrongUsage("what?"); }, {"do", "--json"});
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(Json::parse(run.output), Json({{"error", "what?"}, {"kind", "usage"}}));
}

TEST(Kind, OfACommandLineThatIsNotUnderstoodIsUsage) {
    for (const std::vector<const char*>& line :
         {std::vector<const char*>{"do", "--nonsense", "--json"}, {"--json", "do", "more"}, {"--json"}}) {
        const ProgramRun run = runThrowing([] {}, line);
        EXPECT_EQ(run.status, 2);
        EXPECT_EQ(Json::parse(run.output)["kind"], "usage");
    }
    EXPECT_EQ(runThrowing([] {}, {"do", "--nonsense"}).output, "");
    EXPECT_EQ(runThrowing([] {}, {"do", "--", "--json"}).output, "");
}

TEST(Kind, OfWhatIsDoneIsNone) {
    const ProgramRun run = runThrowing([] {}, {"do", "--json"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.output, "");
}

} // namespace
} // namespace DAX::Tests
