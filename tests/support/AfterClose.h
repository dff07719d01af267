#pragma once

#include <functional>

namespace DAX::Tests {

// Runs the function once, after the next fclose() of this thread, for what may happen to a file between its writer and
// its reader. A test program that links the target AfterClose gets its fclose() replaced.
void afterNextClose(std::function<void()> function);

} // namespace DAX::Tests
