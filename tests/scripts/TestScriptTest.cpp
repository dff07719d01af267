#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "scripts/ScriptTree.h"

namespace DAX::Tests {
namespace {

namespace fs = std::filesystem;

const char BUILD[] = "#!/bin/bash\nexit 0\n";

// Keeps its arguments. Runs what is to happen while the tests run. The tests fail if there is a file that says so.
const char CTEST[] = "#!/bin/bash\n"
                     "echo \"$*\" >>ctest-calls\n"
                     "[[ ! -e meanwhile ]] || ./meanwhile\n"
                     "if [[ -e fail ]]; then\n"
                     "    echo '50% tests passed, 1 tests failed out of 2'\n"
                     "    exit 8\n"
                     "fi\n"
                     "echo '100% tests passed, 0 tests failed out of 2'\n";

// A program is built, and a second run of what changed fails.
const char FAILS_IN_A_SECOND_RUN[] = "#!/bin/bash\n"
                                     "rm meanwhile\n"
                                     "touch now\n"
                                     "until [[ build/release/bin/test_Second -nt now ]]; do\n"
                                     "    touch build/release/bin/test_Second\n"
                                     "done\n"
                                     "touch fail\n"
                                     "scripts/test release:changed >second-run 2>&1\n"
                                     "rm fail\n";

// A tree whose build does nothing and whose tests are two programs that need not run.
class TestScript : public ScriptTree {
protected:
    TestScript() : ScriptTree({"test"}) {
        for (const char* const folder : {"tests/golden", "packaging", "cmake", "simulators", "bin"}) {
            fs::create_directories(m_tree / folder);
        }
        writeProgram("scripts/build", BUILD);
        writeProgram("bin/ctest", CTEST);
        writeProgram("build/release/bin/test_First", "");
        writeProgram("build/release/bin/test_Second", "");
    }

    // What the script prints.
    std::string test(const Arguments& arguments = {}) const {
        return runScript("test", {{"PATH", (m_tree / "bin").string() + ":" + std::getenv("PATH")}}, arguments).output;
    }

    void buildAnew(const std::string& program) const { change("build/release/bin/" + program); }

    void change(const std::string& path) const {
        fs::last_write_time(m_tree / path, fs::file_time_type::clock::now() + std::chrono::hours(1));
    }
};

TEST_F(TestScript, TakesEverythingForChangedBeforeAnythingPassed) {
    EXPECT_EQ(test({"release:changed"}), "2 passed, 0 failed\n");
    EXPECT_THAT(m_tree.read("ctest-calls"), testing::HasSubstr("--label-regex ^(test_First|test_Second)( |$)"));
}

TEST_F(TestScript, TakesNothingForChangedAfterAFullRunThatPassed) {
    EXPECT_EQ(test(), "2 passed, 0 failed\n");
    EXPECT_EQ(test({"release:changed"}), "0 passed, 0 failed\n");
}

TEST_F(TestScript, TakesWhatIsBuiltAnewForChangedAfterAFullRunThatPassed) {
    test({"release"});
    buildAnew("test_Second");
    EXPECT_EQ(test({"release:changed"}), "2 passed, 0 failed\n");
    EXPECT_THAT(m_tree.read("ctest-calls"), testing::HasSubstr("--label-regex ^(test_Second)( |$)"));
}

TEST_F(TestScript, TakesEverythingForChangedAfterAFullRunThatFailed) {
    write("fail", "");
    EXPECT_EQ(test(), "1 passed, 1 failed\n");
    fs::remove(m_tree / "fail");
    EXPECT_EQ(test({"release:changed"}), "2 passed, 0 failed\n");
}

TEST_F(TestScript, TakesEverythingForChangedAfterARunOfSomeTests) {
    EXPECT_EQ(test({"release", "-R", "First"}), "2 passed, 0 failed\n");
    EXPECT_EQ(test({"release:threads"}), "2 passed, 0 failed\n");
    EXPECT_EQ(test({"release:changed"}), "2 passed, 0 failed\n");
}

TEST_F(TestScript, TakesNothingForChangedAfterARunOfWhatChangedThatPassed) {
    test({"release:changed"});
    EXPECT_EQ(test({"release:changed"}), "0 passed, 0 failed\n");
}

TEST_F(TestScript, TakesTheTestsOfTheScriptsForChangedWithEachDocumentAndListThatTheyCheck) {
    writeProgram("build/release/bin/test_scripts", "");
    for (const char* const file : {"README.md", "docs/desk.md", "docs/pictures/layers.svg", "CMakeLists.txt",
                                   "src/Common/IO/CMakeLists.txt", "tests/CMakeLists.txt"}) {
        write(file, "");
        test();
        change(file);
        EXPECT_EQ(test({"release:changed"}), "2 passed, 0 failed\n") << file;
        EXPECT_THAT(m_tree.read("ctest-calls"), testing::EndsWith("--label-regex ^(test_scripts)( |$)\n")) << file;
        fs::remove(m_tree / file);
    }
}

TEST_F(TestScript, TakesTheTestsOfTheManualPagesForChangedWithEachOfThem) {
    write("docs/man/tool.1.scd", "");
    test();
    change("docs/man/tool.1.scd");
    test({"release:changed"});
    EXPECT_THAT(m_tree.read("ctest-calls"), testing::HasSubstr("test_manual_pages"));
}

TEST_F(TestScript, TakesNothingForChangedWithAFileThatTheBuildWrites) {
    write("build/release/_deps/README.md", "");
    test();
    change("build/release/_deps/README.md");
    EXPECT_EQ(test({"release:changed"}), "0 passed, 0 failed\n");
}

TEST_F(TestScript, RemembersAFailureOfARunThatAnotherRunOutlasts) {
    test();
    writeProgram("meanwhile", FAILS_IN_A_SECOND_RUN);
    EXPECT_EQ(test(), "2 passed, 0 failed\n");
    EXPECT_THAT(m_tree.read("second-run"), testing::EndsWith("1 passed, 1 failed\n"));

    fs::remove(m_tree / "ctest-calls");
    EXPECT_EQ(test({"release:changed"}), "2 passed, 0 failed\n");
    EXPECT_THAT(m_tree.read("ctest-calls"), testing::HasSubstr("--label-regex ^(test_Second)( |$)"));
}

TEST_F(TestScript, LeavesNothingButTheMarkAndTheOutputOfTheLastRun) {
    write("fail", "");
    test();
    fs::remove(m_tree / "fail");
    test();

    std::vector<std::string> files;
    for (const auto& entry : fs::directory_iterator(m_tree / "build/release")) {
        files.push_back(entry.path().filename().string());
    }
    EXPECT_THAT(files, testing::UnorderedElementsAre("bin", "test.log", "tested"));
    EXPECT_EQ(m_tree.read("build/release/test.log"), "100% tests passed, 0 tests failed out of 2\n");
}

} // namespace
} // namespace DAX::Tests
