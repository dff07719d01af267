#pragma once

#include <functional>
#include <string>
#include <vector>

#include "daxctl/Interruption.h"

namespace daxctl {

// Where the standard output of a command goes.
enum class ChildOutput { TO_OUTPUT, TO_ERRORS };

// Runs a command and waits for its end. An interruption is passed to it as SIGTERM; the same signal once more kills it.
// `meanwhile` is called several times a second until the command has ended, and must not throw. Returns the command's
// exit status, 128 plus the signal's number when a signal ended it, or 127 when it could not be started.
int runChild(
    const std::vector<std::string>& commandLine, ChildOutput output, Interruption& interruption,
    const std::function<void()>& meanwhile = [] {});

} // namespace daxctl
