#pragma once

#include <cstddef>

namespace DAX {
namespace Tests {

// Counts the bytes that operator new of this test program gave to the calling thread since the construction. Linking it
// replaces the program's operator new.
class AllocationMeter {
public:
    AllocationMeter();
    std::size_t bytes() const;

private:
    std::size_t m_start;
};

} // namespace Tests
} // namespace DAX
