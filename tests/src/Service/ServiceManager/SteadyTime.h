#pragma once

#include <chrono>

namespace DAX::Tests {

// The standard library's steady clock stands still while the object lives, and only `pass` moves it. One at a time. For
// a test program that links with --wrap for the clock's now().
class SteadyTime {
public:
    SteadyTime();
    ~SteadyTime();
    SteadyTime(const SteadyTime&) = delete;
    SteadyTime& operator=(const SteadyTime&) = delete;

    void pass(std::chrono::milliseconds time);
};

} // namespace DAX::Tests
