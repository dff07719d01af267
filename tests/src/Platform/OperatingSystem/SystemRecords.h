#pragma once

#include <chrono>
#include <functional>
#include <vector>

namespace DAX::Tests {

// Stand before the system in this test program, for the rest of the process: set them in a child.

// From now on the signals whose handlers are set are kept in their order.
void recordHandlerChanges();
std::vector<int> handlerChanges();

// From now on each wait for a condition with a time-out has run out at once; with the last of them the action runs.
void letTimeRunOut(int times, std::function<void()> action);

// The time-outs of those waits. Each was counted from a time between the end of the wait before (for the first one,
// from the call of letTimeRunOut) and the wait's own begin.
struct TimeOut {
    std::chrono::nanoseconds fromTheWaitBefore; // no shorter than it was
    std::chrono::nanoseconds fromTheBegin;      // no longer than it was
};
std::vector<TimeOut> timeOuts();

} // namespace DAX::Tests
