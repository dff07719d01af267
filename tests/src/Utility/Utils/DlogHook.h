#pragma once

#include <functional>
#include <string>

// Stands before the system log in this test program: from now on the action runs, on the logging thread, before each
// line that has `part` in it. For the rest of the process: set it in a child.
void onLogLine(const std::string& part, std::function<void()> action);

// From now on the system log is standard error, and takes no memory. For the rest of the process: set it in a child.
void logToStandardError();
