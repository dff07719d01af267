#pragma once

#include <utility>

namespace DAX::Platform {

// Whether a key was pressed on the console, and its code. Nothing is ever pressed on this platform.
std::pair<bool, int> wasAnyKeyPressed();

// Ends the process at once with status 143, without any destructor.
[[noreturn]] void callExit();

} // namespace DAX::Platform
