#pragma once

namespace DAX::Tests {

// How many seconds pass in one second on the clocks that are made from now on: 1 at first.
void setClockSpeed(float speed);

} // namespace DAX::Tests
