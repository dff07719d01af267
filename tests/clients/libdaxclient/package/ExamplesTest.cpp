// The examples, built with the installed files alone, and run.
#include <iterator>
#include <memory>

#include <gmock/gmock.h>

#include "Compilers.h"
#include "Installed.h"
#include "support/Sanitizer.h"
#include "system/support/Desk.h"
#include "system/support/Scenarios.h"

namespace DAX::Tests {
namespace {

using namespace testing;

const std::vector<std::string> EXAMPLES{"upgrade", "lock", "patient_service"};
const std::vector<std::string> WARNINGS{"-Wall", "-Wextra", "-Werror"};

std::vector<std::string> wordsOf(const std::string& text) {
    std::istringstream stream(text);
    return {std::istream_iterator<std::string>(stream), {}};
}

std::vector<std::string> joined(std::vector<std::string> left, const std::vector<std::string>& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

class Examples : public Test {
protected:
    void SetUp() override {
        if (HAS_SANITIZER) {
            GTEST_SKIP() << "the library needs programs that are built with the sanitizer";
        }
        installed = std::make_unique<Installed>();
        sources = installed->folderOf("upgrade.cpp");
        programs = installed->root() / "programs";
    }

    void buildWithCMake(const std::string& compiler) const {
        outputOf({CMAKE_PROGRAM, "-S", sources.string(), "-B", programs.string(), "-G", "Unix Makefiles",
                  "-DCMAKE_PREFIX_PATH=" + installed->prefix().string(), "-DCMAKE_CXX_COMPILER=" + compiler,
                  "-DCMAKE_CXX_FLAGS=-Wall -Wextra -Werror"});
        outputOf({CMAKE_PROGRAM, "--build", programs.string()});
    }

    void buildWithPkgConfig(const std::string& compiler) const {
        std::filesystem::create_directory(programs);
        const std::string found = outputOf({"pkg-config", "--cflags", "--libs", "daxclient"},
                                           {{"PKG_CONFIG_PATH", installed->folderOf("daxclient.pc").string()}});
        for (const std::string& example : EXAMPLES) {
            const std::string source = (sources / (example + ".cpp")).string();
            outputOf(joined(joined({compiler, "-std=c++17", source, "-o", (programs / example).string()}, WARNINGS),
                            wordsOf(found)));
        }
    }

    FinishedRun runExample(const std::string& name, const std::vector<std::string>& arguments = {}) const {
        return run({joined({(programs / name).string()}, arguments),
                    {{"LD_LIBRARY_PATH", installed->folderOf("libdaxclient.so.1").string()}},
                    {},
                    {}});
    }

    void expectThatTheyWork() const {
        Desk desk;
        desk.play(QUICK);
        const FinishedRun locked = runExample("lock", {"exit 0"});
        EXPECT_EQ(locked.end, ProcessEnd::exited(0)) << locked.errors;
        EXPECT_EQ(desk.countMessages("External lock 1 is being released by lock example"), 1);
        EXPECT_EQ(runExample("patient_service").output, "There is an upgrade.\n");
        EXPECT_THAT(runExample("upgrade").output,
                    AllOf(HasSubstr("found version 1100\n"), EndsWith("done; restart the device\n")));
        EXPECT_EQ(runExample("patient_service", {"0", "2"}).output,
                  "Refused: a lock is in force.\nRefused: a lock is in force.\n");
        desk.stopBus();
        EXPECT_THAT(runExample("upgrade").errors, StartsWith("The message bus cannot be reached: "));
    }

    std::unique_ptr<Installed> installed;
    std::filesystem::path sources;
    std::filesystem::path programs;
};

TEST_F(Examples, AreBuiltWithCMakeAndWork) {
    buildWithCMake("g++");
    expectThatTheyWork();
}

TEST_F(Examples, AreBuiltWithPkgConfigAndWork) {
    buildWithPkgConfig("g++");
    expectThatTheyWork();
}

TEST_F(Examples, AreBuiltWithTheOtherCompiler) {
    if (compilers().size() < 2) {
        GTEST_SKIP() << "this machine has no clang++";
    }
    buildWithCMake(compilers().back());
}

TEST_F(Examples, AreNotBuiltForAnotherVersionOfTheInterface) {
    const std::string project = (installed->root() / "project").string();
    std::filesystem::create_directory(project);
    std::ofstream(project + "/CMakeLists.txt") << "cmake_minimum_required(VERSION 3.16)\nproject(p LANGUAGES CXX)\n"
                                                  "find_package(daxclient 2 CONFIG REQUIRED)\n";
    const FinishedRun configured = run({{CMAKE_PROGRAM, "-S", project, "-B", project + "/build", "-G", "Unix Makefiles",
                                         "-DCMAKE_PREFIX_PATH=" + installed->prefix().string()},
                                        {},
                                        {},
                                        {}},
                                       std::chrono::seconds(250));
    EXPECT_EQ(configured.end, ProcessEnd::exited(1));
    EXPECT_THAT(configured.errors, HasSubstr("version: 1.0.0"));
}

} // namespace
} // namespace DAX::Tests
