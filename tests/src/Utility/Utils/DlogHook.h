#pragma once

#include <functional>
#include <string>

// Replaces the system log in this test program: from now on the action runs, on the logging thread, before each line
// that contains `part`. It stays for the rest of the process, so set it in a child.
void onLogLine(const std::string& part, std::function<void()> action);

// From now on the system log is standard error, and allocates no memory. It stays for the rest of the process, so set
// it in a child.
void logToStandardError();
