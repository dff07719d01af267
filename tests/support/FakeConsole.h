#pragma once

#include <string>

// Replaces freopen in a test program that links the target FakeConsole, so that the test decides what "/dev/console"
// is, whatever the machine has. Until a knob is set, calls pass through. Only the test's thread sets the knobs.
namespace FakeConsole {

// Makes "/dev/console" this file.
void redirectTo(const std::string& path);

// Makes "/dev/console" impossible to open.
void refuse();

} // namespace FakeConsole
