// What the built programs need of the dynamic loader, as readelf sees it.
#include <string>

#include <gmock/gmock.h>

#include "support/Process.h"

using DAX::Tests::FinishedRun;
using DAX::Tests::ProcessEnd;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

namespace {

class StaticRuntimeTest : public testing::TestWithParam<const char*> {
protected:
    void SetUp() override {
        if (!DAX_STATIC_RUNTIME) {
            GTEST_SKIP() << "this build takes the shared C++ runtime";
        }
    }
};

TEST_P(StaticRuntimeTest, ProgramLoadsNoSharedCppRuntime) {
    const std::string program = std::string(PROGRAMS) + "/" + GetParam();
    const FinishedRun run = DAX::Tests::run({{"readelf", "-W", "--dynamic", program}, {{"LC_ALL", "C"}}, {}, {}});

    ASSERT_EQ(run.end, ProcessEnd::exited(0)) << run.errors;
    EXPECT_THAT(run.output, AllOf(HasSubstr("[libc.so"), Not(HasSubstr("[libstdc++")), Not(HasSubstr("[libgcc_s"))));
}

INSTANTIATE_TEST_SUITE_P(All, StaticRuntimeTest,
                         testing::Values("DAXService", "daxctl", "kovanctl", "DAXCoreSimulator"),
                         [](const auto& row) { return std::string(row.param); });

} // namespace
