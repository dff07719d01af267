#include <cerrno>
#include <fstream>

#include <gtest/gtest.h>
#include <proc_stat.h>

#include "support/ForkedProcess.h"
#include "support/OrdinaryUser.h"

using DAX::Tests::ForkedProcess;
using DAX::Tests::OrdinaryUser;

namespace {

int adjustment() {
    int value = 0;
    std::ifstream("/proc/self/oom_score_adj") >> value;
    return value;
}

} // namespace

// Whether a process may protect itself depends on the machine, so both outcomes are right if the result tells the
// truth.
TEST(ProcStatTest, ResultTellsWhetherTheProcessIsProtected) {
    ForkedProcess process([] {
        const int before = adjustment();
        const int result = proc_stat_set_vip_process();
        return result == 0 ? adjustment() == -900 : result < 0 && adjustment() == before;
    });

    EXPECT_EQ(process.wait(), 1);
}

TEST(ProcStatTest, OrdinaryUserIsRefusedWithTheReason) {
    ForkedProcess process([] {
        const int before = adjustment();
        const OrdinaryUser user;
        const bool refused = proc_stat_set_vip_process() == -EACCES;
        return refused && adjustment() == before;
    });

    EXPECT_EQ(process.wait(), 1);
}
