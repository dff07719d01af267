// What is installed beside the programs.
#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "support/Process.h"
#include "support/TemporaryRoot.h"

namespace DAX::Tests {
namespace {

namespace fs = std::filesystem;

class Install : public testing::Test {
protected:
    // The files of one component, in a folder below the prefix.
    std::vector<std::string> installed(const std::string& component, const std::string& folder) const {
        const FinishedRun done = run(
            {{"cmake", "--install", BUILD_FOLDER, "--component", component, "--prefix", (m_root / component).string()},
             {{"DESTDIR", std::nullopt}},
             {},
             {}},
            std::chrono::seconds(60));
        EXPECT_EQ(done.end, ProcessEnd::exited(0)) << done.errors;
        std::vector<std::string> files;
        const fs::path place = m_root / (component + "/" + folder);
        for (const auto& entry : fs::recursive_directory_iterator(place)) {
            if (entry.is_regular_file()) {
                files.push_back(entry.path().lexically_relative(place).string());
            }
        }
        return files;
    }

    const TemporaryRoot m_root;
};

using testing::UnorderedElementsAre;

TEST_F(Install, PutsTheCompletionWhereBashLooksForIt) {
    EXPECT_THAT(installed("dax", "share/bash-completion/completions"), UnorderedElementsAre("daxctl"));
    EXPECT_THAT(installed("simulation", "share/bash-completion/completions"), UnorderedElementsAre("kovanctl"));
}

TEST_F(Install, PutsTheManualPagesBesideTheirPrograms) {
    if (run({{"sh", "-c", "command -v scdoc"}, {}, {}, {}}).output.empty()) {
        GTEST_SKIP() << "this machine has no scdoc";
    }
    EXPECT_THAT(installed("dax", "share/man"), UnorderedElementsAre("man1/daxctl.1", "man8/DAXService.8"));
    EXPECT_THAT(installed("simulation", "share/man"),
                UnorderedElementsAre("man1/kovanctl.1", "man1/DAXCoreSimulator.1", "man5/device.ini.5",
                                     "man5/core-scenario.ini.5"));
}

} // namespace
} // namespace DAX::Tests
