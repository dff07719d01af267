#pragma once

namespace DAX::Tests {

// How many waits for a condition with a time-out have begun in this test program, and how many of them have timed out,
// even if they are still waiting for the mutex.
int begunTimedWaits();
int timedOutWaits();

} // namespace DAX::Tests
