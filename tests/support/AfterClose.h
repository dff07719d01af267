#pragma once

#include <functional>

namespace DAX::Tests {

// Runs the function once, behind the next fclose() of this thread: what may happen to a file between its writer and its
// reader. A test program that links the target AfterClose has its fclose() replaced.
void afterNextClose(std::function<void()> function);

} // namespace DAX::Tests
