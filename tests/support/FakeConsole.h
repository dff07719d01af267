#pragma once

#include <string>

// Stands before freopen in a test program that links the target FakeConsole, so that "/dev/console" is what the test
// says, whatever the machine has. Without a knob, calls pass through. Set by the test's thread.
namespace FakeConsole {

// "/dev/console" is this file.
void redirectTo(const std::string& path);

// "/dev/console" cannot be opened.
void refuse();

} // namespace FakeConsole
