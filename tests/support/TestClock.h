#pragma once

#include <chrono>
#include <functional>

namespace DAX::Tests {

// Takes the time into the test's own hands: while the object lives, Boost's steady clock stands still, and only the
// object moves it. One at a time, made before the threads that are to keep to it; any thread may call. For a test
// program that links the target TestClock, which replaces the clock's now(), pthread_cond_timedwait(),
// pthread_cond_wait() and nanosleep(). The clock of the standard library runs on, and so do the bounds of the tests.
class TestClock {
public:
    using Duration = std::chrono::milliseconds;

    // A timed wait ends when it is notified, or when pass() has moved the clock to its deadline.
    TestClock();

    // Nobody waits: a timed wait and a nanosleep() move the clock to their end, call `skipped` with the time that they
    // would have taken, and return as if it had passed.
    explicit TestClock(std::function<void(Duration)> skipped);
    ~TestClock();
    TestClock(const TestClock&) = delete;
    TestClock& operator=(const TestClock&) = delete;

    void pass(Duration time);

    // Waits until a timed wait has looked at the clock as it stands now and goes on. False when none does so within the
    // usual bound.
    bool isAwaited() const;
};

// How many waits for a condition have begun in this test program, with and without a time-out, and how many have timed
// out, even if they are still waiting for the mutex.
int begunTimedWaits();
int begunUntimedWaits();
int timedOutWaits();

} // namespace DAX::Tests
