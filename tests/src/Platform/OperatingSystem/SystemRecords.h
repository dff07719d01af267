#pragma once

#include <chrono>
#include <functional>
#include <vector>

namespace DAX::Tests {

// These replace calls of the system in this test program, for the rest of the process: set them in a child.

// From now on records the signals whose handlers are set, in order.
void recordHandlerChanges();
std::vector<int> handlerChanges();

// From now on every wait for a condition with a time-out times out at once; at the last of so many waits the action
// runs.
void letTimeRunOut(int times, std::function<void()> action);

// The time-outs of those waits. The caller took the start of each at some time between the end of the wait before (for
// the first one, the call of letTimeRunOut) and the beginning of the wait itself, so the true value lies between the
// two.
struct TimeOut {
    std::chrono::nanoseconds fromTheWaitBefore; // not shorter than the true value
    std::chrono::nanoseconds fromTheBegin;      // not longer than the true value
};
std::vector<TimeOut> timeOuts();

} // namespace DAX::Tests
