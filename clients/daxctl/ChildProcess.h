#pragma once

#include <functional>
#include <string>
#include <vector>

#include "daxctl/Interruption.h"

namespace daxctl {

// Where the standard output of a command goes.
enum class ChildOutput { TO_OUTPUT, TO_ERRORS };

// How a command ended.
struct ChildEnd {
    int status; // its exit status, 128 plus the signal's number when a signal ended it, 127 when it was not started
    bool wasStarted = true;
};

// Runs a command and waits for its end. An interruption is passed to it as SIGTERM; the same signal once more, after
// more than ONE_INTERRUPTION, kills it. `meanwhile` is called several times a second until the command has ended, and
// must not throw. Why a command could not be started is told on standard error.
ChildEnd runChild(
    const std::vector<std::string>& commandLine, ChildOutput output, Interruption& interruption,
    const std::function<void()>& meanwhile = [] {});

} // namespace daxctl
