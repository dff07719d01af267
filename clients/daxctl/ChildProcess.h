#pragma once

#include <functional>
#include <string>
#include <vector>

#include "daxctl/Interruption.h"

namespace daxctl {

// Where the standard output of a command goes.
enum class ChildOutput { TO_OUTPUT, TO_ERRORS };

// Runs a command and waits for its end; an interruption is handed on to it as SIGTERM, and kills it when it comes by
// the same signal once more. `meanwhile` is called several times a second until then, and does not throw. Gives the
// exit status, 128 and the signal's number when a signal ended the command, 127 when it could not be started.
int runChild(
    const std::vector<std::string>& commandLine, ChildOutput output, Interruption& interruption,
    const std::function<void()>& meanwhile = [] {});

} // namespace daxctl
