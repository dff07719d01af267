#pragma once

#include <cstddef>

namespace DAX::Tests {

// Measures what operator new gives to the calling thread from the construction on. A test program that links the target
// AllocationMeter and makes one gets its operator new replaced. One at a time in a thread.
class AllocationMeter {
public:
    AllocationMeter();

    // All bytes that were taken, whether or not they were given back.
    std::size_t bytes() const;

    // The largest piece.
    std::size_t largest() const;
};

} // namespace DAX::Tests
