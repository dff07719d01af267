#pragma once

#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "clients_common/CommandLine.h"

namespace DAX::Tests {

struct ProgramRun {
    int status;
    std::string output;
    std::string errors;
};

// Runs a program named "tool" to which `build` adds what it has.
inline ProgramRun runProgram(const std::function<void(clients_common::Program&)>& build,
                             std::vector<const char*> arguments) {
    arguments.insert(arguments.begin(), "tool");
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    clients_common::Program program("tool", "For tests.");
    program.requireCommand();
    build(program);
    const int status = program.run(static_cast<int>(arguments.size()), arguments.data());
    return {status, testing::internal::GetCapturedStdout(), testing::internal::GetCapturedStderr()};
}

} // namespace DAX::Tests
