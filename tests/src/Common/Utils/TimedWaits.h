#pragma once

namespace DAX::Tests {

// How many waits for a condition with a time-out have begun in this test program, and how many of them have run out,
// whether or not they have the mutex back.
int begunTimedWaits();
int timedOutWaits();

} // namespace DAX::Tests
