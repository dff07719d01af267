#pragma once

namespace DAX::Tests {

// How many seconds the clocks made from now on count in one real second; 1 at first.
void setClockSpeed(float speed);

} // namespace DAX::Tests
