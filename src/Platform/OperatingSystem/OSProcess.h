#pragma once

#include <utility>

namespace DAX::Platform {

// Whether a key was pressed on the console, and its code. On this platform always false and 0.
std::pair<bool, int> wasAnyKeyPressed();

// Ends the process at once with status 143. No destructor and no exit handler runs.
[[noreturn]] void callExit();

} // namespace DAX::Platform
