#pragma once

#include <string>

namespace KovanHost {

// Files that several threads and processes append whole lines to.

// What a log may hold before it is set aside.
constexpr long MOST_LOG_BYTES = 16L * 1024 * 1024;

// A descriptor that appends, the file made when it is not there; -1 with errno when it cannot be opened.
int openForAppending(const std::string& path);

// Appends the line and its end with one write, so that it stays whole among other writers' lines. False: not written.
bool appendLine(int descriptor, std::string line);

// The same for a log that is opened for this line alone. One that holds MOST_LOG_BYTES is renamed to PATH.1 before, in
// place of an older one; whichever process finds it so, and whoever else appends meanwhile, no line is lost. False with
// errno: not written.
bool appendToLog(const std::string& path, const std::string& line);

} // namespace KovanHost
