#pragma once

#include <string>
#include <vector>

#include "daxctl/Interruption.h"

namespace daxctl {

// Where the standard output of a command goes.
enum class ChildOutput { TO_OUTPUT, TO_ERRORS };

// Runs a command and waits for its end; an interruption is handed on to it as SIGTERM. Gives its exit status, 128 and
// the signal's number when a signal ended it, 127 when it could not be started.
int runChild(const std::vector<std::string>& commandLine, ChildOutput output, Interruption& interruption);

} // namespace daxctl
