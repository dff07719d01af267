#pragma once

#include <chrono>
#include <functional>
#include <vector>

// Stand before the system in this test program, for the rest of the process: set them in a child.

// From now on the signals whose handlers are set are kept in their order.
void recordHandlerChanges();
std::vector<int> handlerChanges();

// From now on each wait for a condition with a time-out has run out at once; with the last of them the action runs.
void letTimeRunOut(int times, std::function<void()> action);

// The time-outs of those waits.
std::vector<std::chrono::nanoseconds> timeOuts();
