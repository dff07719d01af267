#pragma once

#include <cstddef>

namespace DAX::Tests {

// What operator new gave to the calling thread since the construction. A test program that links the target
// AllocationMeter and makes one has its operator new replaced. One at a time in a thread.
class AllocationMeter {
public:
    AllocationMeter();

    // All that was taken, whether or not it was given back.
    std::size_t bytes() const;

    // The largest piece.
    std::size_t largest() const;
};

} // namespace DAX::Tests
