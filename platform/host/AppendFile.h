#pragma once

#include <string>

namespace KovanHost {

// Files to which several threads and processes append whole lines.

// The size at which a log is renamed.
constexpr long MOST_LOG_BYTES = 16L * 1024 * 1024;

// A descriptor that appends; the caller closes it. Makes the file when it does not exist. -1 with errno when it cannot
// be opened.
int openForAppending(const std::string& path);

// Appends the line and its end with one write, so that other writers' lines do not break it. False when it was not
// written.
bool appendLine(int descriptor, std::string line);

// The same for a log that is opened just for this line. A log that holds MOST_LOG_BYTES is renamed to PATH.1 before, in
// place of an older one. No line is lost by that, whichever process does it and whoever else appends at the same time.
// False with errno when the line was not written.
bool appendToLog(const std::string& path, const std::string& line);

} // namespace KovanHost
