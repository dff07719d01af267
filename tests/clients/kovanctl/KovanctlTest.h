#pragma once

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/Process.h"
#include "support/TemporaryRoot.h"

namespace DAX::Tests {

inline const ProcessEnd DONE = ProcessEnd::exited(0);
inline const ProcessEnd REFUSED = ProcessEnd::exited(1);
inline const ProcessEnd WRONG_USAGE = ProcessEnd::exited(2);

// Runs kovanctl on a simulated device of the test's own.
class KovanctlTest : public testing::Test {
protected:
    static FinishedRun kovanctl(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), KOVANCTL);
        return run({arguments, {}, {}, {}});
    }

    const TemporaryRoot m_root;
};

// Command lines that print nothing on standard output.
inline void expectFailure(const FinishedRun& run, const ProcessEnd& end, const std::string& message) {
    EXPECT_EQ(end, run.end);
    EXPECT_EQ(run.output, "");
    EXPECT_EQ(message, run.errors);
}

} // namespace DAX::Tests
