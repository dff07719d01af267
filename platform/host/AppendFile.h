#pragma once

#include <string>

namespace KovanHost {

// Files that several threads and processes append whole lines to.

// A descriptor that appends, the file made when it is not there; -1 with errno when it cannot be opened.
int openForAppending(const std::string& path);

// Appends the line and its end with one write, so that it stays whole among other writers' lines. False: not written.
bool appendLine(int descriptor, std::string line);

} // namespace KovanHost
