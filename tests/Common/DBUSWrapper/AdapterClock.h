#pragma once

namespace DAX {
namespace Tests {

// How many seconds pass in one second on the clocks that are made from now on: 1 at first.
void setClockSpeed(float speed);

} // namespace Tests
} // namespace DAX
