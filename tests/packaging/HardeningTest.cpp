// The built programs, as readelf and objdump see them.
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "support/Process.h"

using DAX::Tests::FinishedRun;
using DAX::Tests::ProcessEnd;
using testing::ContainsRegex;
using testing::HasSubstr;

namespace {

std::string outputOf(const std::vector<std::string>& line) {
    const FinishedRun run = DAX::Tests::run({line, {{"LC_ALL", "C"}}, {}, {}});
    if (!(run.end == ProcessEnd::exited(0))) {
        throw std::runtime_error(line.front() + ": " + run.errors);
    }
    return run.output;
}

// Whether the compile command is for a program that people run: for an object in one of these folders. A test may
// compile one of their sources as well.
bool isProduction(const nlohmann::json& entry) {
    const std::string command = entry.at("command");
    for (const char* const folder : {" -o src/", " -o platform/", " -o clients/", " -o simulators/"}) {
        if (command.find(folder) != std::string::npos) {
            return true;
        }
    }
    return false;
}

class HardeningTest : public testing::TestWithParam<const char*> {
protected:
    void SetUp() override {
        if (!DAX_HARDENED) {
            GTEST_SKIP() << "this build is not optimised, or has a sanitizer";
        }
    }

    static std::string program() { return std::string(PROGRAMS) + "/" + GetParam(); }
};

TEST_P(HardeningTest, ProgramCanBeLoadedAnywhere) {
    EXPECT_THAT(outputOf({"readelf", "-W", "--file-header", program()}),
                ContainsRegex("Type: +DYN \\(Position-Independent Executable file\\)"));
    EXPECT_THAT(outputOf({"readelf", "-W", "--dynamic", program()}), ContainsRegex("\\(FLAGS_1\\).* PIE"));
}

TEST_P(HardeningTest, ProgramResolvesAllAtItsStartAndThenProtectsIt) {
    EXPECT_THAT(outputOf({"readelf", "-W", "--program-headers", program()}), HasSubstr("GNU_RELRO"));
    EXPECT_THAT(outputOf({"readelf", "-W", "--dynamic", program()}), ContainsRegex("\\(FLAGS\\).*BIND_NOW"));
}

TEST_P(HardeningTest, ProgramChecksItsStackAndItsBuffers) {
    const std::string symbols = outputOf({"readelf", "-W", "--dyn-syms", program()});
    EXPECT_THAT(symbols, HasSubstr(" __stack_chk_fail@"));
#ifdef __clang__
    if (GetParam() == std::string("kovanctl")) {
        return; // it has no call that clang would have to check when it runs
    }
#endif
    EXPECT_THAT(symbols, ContainsRegex(" __[a-z]+_chk@"));
}

TEST_P(HardeningTest, ProgramMarksWhereAnIndirectJumpMayLand) {
    if (!DAX_HAS_CF_PROTECTION) {
        GTEST_SKIP() << "the compiler has no control-flow protection for this machine";
    }
    EXPECT_THAT(outputOf({"objdump", "--disassemble=main", "--no-show-raw-insn", program()}),
                ContainsRegex("<main>:\n[^\n]*endbr64"));
}

INSTANTIATE_TEST_SUITE_P(All, HardeningTest, testing::Values("DAXService", "daxctl", "kovanctl", "DAXCoreSimulator"),
                         [](const auto& row) { return std::string(row.param); });

TEST(CompileCommandsTest, HaveTheFilesystemLibrarysVersionInEveryFile) {
    const auto commands = nlohmann::json::parse(std::ifstream(std::string(BUILD_FOLDER) + "/compile_commands.json"));
    int files = 0;
    for (const auto& entry : commands) {
        const std::string file = entry.at("file");
        if (isProduction(entry)) {
            ++files;
            EXPECT_THAT(entry.at("command").get<std::string>(), HasSubstr(" -DBOOST_FILESYSTEM_VERSION=3 ")) << file;
        }
    }
    EXPECT_GT(files, 0);
}

TEST(CompileCommandsTest, HardenEveryFileOfAnOptimisedBuild) {
    if (!DAX_HARDENED) {
        GTEST_SKIP() << "this build is not optimised, or has a sanitizer";
    }
    const auto commands = nlohmann::json::parse(std::ifstream(std::string(BUILD_FOLDER) + "/compile_commands.json"));
    std::vector<std::string> options{" -D_FORTIFY_SOURCE=2 ", " -fstack-protector-strong "};
    if (DAX_HAS_CF_PROTECTION) {
        options.emplace_back(" -fcf-protection ");
    }
    int files = 0;
    for (const auto& entry : commands) {
        const std::string file = entry.at("file");
        if (!isProduction(entry)) {
            continue;
        }
        ++files;
        for (const std::string& option : options) {
            EXPECT_THAT(entry.at("command").get<std::string>(), HasSubstr(option)) << file;
        }
        // The second is for what goes into a shared library.
        EXPECT_THAT(entry.at("command").get<std::string>(), ContainsRegex(" -fPI[EC] ")) << file;
    }
    EXPECT_GT(files, 0);
}

} // namespace
