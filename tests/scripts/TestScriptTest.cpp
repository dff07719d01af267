#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "scripts/ScriptTree.h"

namespace DAX::Tests {
namespace {

namespace fs = std::filesystem;

const char BUILD[] = "#!/bin/bash\nexit 0\n";

// Keeps its arguments. Runs what is to happen while the tests run. The tests fail if there is a file that says so.
const char CTEST[] = "#!/bin/bash\n"
                     "echo \"$*\" >>build/ctest-calls\n"
                     "[[ ! -e build/meanwhile ]] || build/meanwhile\n"
                     "if [[ -e build/fail ]]; then\n"
                     "    echo '50% tests passed, 1 tests failed out of 2'\n"
                     "    exit 8\n"
                     "fi\n"
                     "echo '100% tests passed, 0 tests failed out of 2'\n";

// A program is built, and a second run of what changed fails.
const char FAILS_IN_A_SECOND_RUN[] = "#!/bin/bash\n"
                                     "rm build/meanwhile\n"
                                     "touch build/now\n"
                                     "until [[ build/release/bin/test_Second -nt build/now ]]; do\n"
                                     "    touch build/release/bin/test_Second\n"
                                     "done\n"
                                     "touch build/fail\n"
                                     "scripts/test release:changed >build/second-run 2>&1\n"
                                     "rm build/fail\n";

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

    // As a file that comes out of an archive.
    void writeLongAgo(const std::string& file) const {
        write(file, "");
        fs::last_write_time(m_tree / file, fs::file_time_type::clock::now() - std::chrono::hours(1));
    }

    // Expects that a run of what changed takes these programs.
    void expectChosen(const std::string& programs, const std::string& because) const {
        EXPECT_EQ(test({"release:changed"}), "2 passed, 0 failed\n") << because;
        EXPECT_THAT(m_tree.read("build/ctest-calls"), testing::EndsWith(" --label-regex ^(" + programs + ")( |$)\n"))
            << because;
    }
};

TEST_F(TestScript, TakesEverythingForChangedBeforeAnythingPassed) {
    EXPECT_EQ(test({"release:changed"}), "2 passed, 0 failed\n");
    EXPECT_THAT(m_tree.read("build/ctest-calls"), testing::HasSubstr("--label-regex ^(test_.*)( |$)"));
}

TEST_F(TestScript, TakesNothingForChangedAfterAFullRunThatPassed) {
    EXPECT_EQ(test(), "2 passed, 0 failed\n");
    EXPECT_EQ(test({"release:changed"}), "0 passed, 0 failed\n");
}

TEST_F(TestScript, TakesWhatIsBuiltAnewForChangedAfterAFullRunThatPassed) {
    test({"release"});
    buildAnew("test_Second");
    EXPECT_EQ(test({"release:changed"}), "2 passed, 0 failed\n");
    EXPECT_THAT(m_tree.read("build/ctest-calls"), testing::HasSubstr("--label-regex ^(test_Second)( |$)"));
}

TEST_F(TestScript, TakesEverythingForChangedAfterAFullRunThatFailed) {
    write("build/fail", "");
    EXPECT_EQ(test(), "1 passed, 1 failed\n");
    fs::remove(m_tree / "build/fail");
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

TEST_F(TestScript, TakesTheTestsThatReadAFileForChangedWithIt) {
    const std::pair<const char*, const char*> files[] = {
        {"README.md", "test_scripts"},
        {"docs/desk.md", "test_scripts"},
        {"docs/client.md", "test_daxclient_package|test_scripts"},
        {"docs/platform.md", "test_platform_device|test_scripts"},
        {"CMakeLists.txt", "test_packaging|test_scripts"},
        {"tests/src/Common/CMakeLists.txt", "test_packaging|test_scripts"},
        {"src/Common/IO/File.h", "test_Platform_Vconf"},
        {"include/DAXEnums.h", "test_Platform_Vconf"},
        {"platform/host/File.cpp", "test_Platform_Vconf"},
        {"clients/daxctl/Failure.cpp", "test_Platform_Vconf"},
        {"simulators/Core.cpp", "test_Platform_Vconf"},
    };
    for (const auto& [file, programs] : files) {
        write(file, "");
        test();
        change(file);
        expectChosen(programs, file);
        fs::remove(m_tree / file);
    }
}

TEST_F(TestScript, TakesEverythingForChangedWithAFileThatIsNeitherADocumentNorASource) {
    for (const char* const file :
         {"docs/monitor.schema.json", "docs/pictures/monitor-upgrade.svg", "examples/lock.cpp", "packaging/dax.conf",
          "clients/libdaxclient/exported-symbols.txt", "examples/CMakeLists.txt", "cmake/Layers.txt",
          "scripts/check-layers", "CMakePresets.json", "simulators/core-scenario.example.ini", "tests/golden/wire/a",
          "tests/support/policies/a.conf"}) {
        write(file, "");
        test();
        change(file);
        expectChosen("test_.*", file);
        fs::remove(m_tree / file);
    }
}

TEST_F(TestScript, TakesAFileForChangedThatIsNewOrGoneOrHasMoved) {
    write("tests/golden/a", "");
    const std::pair<const char*, std::function<void()>> changes[] = {
        {"gone", [this] { fs::remove(m_tree / "tests/golden/a"); }},
        {"new, and old", [this] { writeLongAgo("tests/golden/b"); }},
        {"moved", [this] { fs::rename(m_tree / "tests/golden/b", m_tree / "tests/golden/c"); }},
    };
    for (const auto& [name, change] : changes) {
        test();
        change();
        expectChosen("test_.*", name);
    }
}

TEST_F(TestScript, TakesTheTestsThatRunAProgramForChangedWithIt) {
    for (const char* const program :
         {"bin/DAXService", "bin/DAXCoreSimulator", "bin/daxctl", "bin/kovanctl", "lib/libdaxclient.so"}) {
        writeProgram(std::string("build/release/") + program, "");
        test();
        change(std::string("build/release/") + program);
        expectChosen(
            "test_DAXCoreSimulator|test_daxclient.*|test_daxctl|test_kovanctl|test_manual_pages|test_packaging|"
            "test_scripts|test_system.*",
            program);
        writeLongAgo(std::string("build/release/") + program);
    }
}

TEST_F(TestScript, TakesNothingForChangedWithASourceThatNoTestReadsOrAHiddenFile) {
    for (const char* const file : {"tests/src/Common/IOTest.cpp", "benchmarks/streams/main.cpp", "fuzz/decoder.dict",
                                   ".git/index", ".cache/clangd/index/a.idx", "src/.File.h.swp"}) {
        write(file, "");
        test();
        change(file);
        EXPECT_EQ(test({"release:changed"}), "0 passed, 0 failed\n") << file;
        fs::remove(m_tree / file);
    }
}

TEST_F(TestScript, TakesTheTestsOfTheManualPagesForChangedWithEachOfThem) {
    write("docs/man/tool.1.scd", "");
    test();
    change("docs/man/tool.1.scd");
    test({"release:changed"});
    EXPECT_THAT(m_tree.read("build/ctest-calls"), testing::HasSubstr("--label-regex ^(test_manual_pages)( |$)"));
}

TEST_F(TestScript, TakesNothingForChangedWithAFileThatTheBuildWrites) {
    write("build/release/_deps/README.md", "");
    test();
    change("build/release/_deps/README.md");
    EXPECT_EQ(test({"release:changed"}), "0 passed, 0 failed\n");
}

TEST_F(TestScript, RemembersAFailureOfARunThatAnotherRunOutlasts) {
    test();
    writeProgram("build/meanwhile", FAILS_IN_A_SECOND_RUN);
    EXPECT_EQ(test(), "2 passed, 0 failed\n");
    EXPECT_THAT(m_tree.read("build/second-run"), testing::EndsWith("1 passed, 1 failed\n"));

    fs::remove(m_tree / "build/ctest-calls");
    EXPECT_EQ(test({"release:changed"}), "2 passed, 0 failed\n");
    EXPECT_THAT(m_tree.read("build/ctest-calls"), testing::HasSubstr("--label-regex ^(test_Second)( |$)"));
}

TEST_F(TestScript, LeavesNothingButTheMarkAndTheOutputOfTheLastRun) {
    write("build/fail", "");
    test();
    fs::remove(m_tree / "build/fail");
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
