#pragma once

#include <cstddef>
#include <functional>

namespace DAX::Tests {

// While the object lives, the calling thread's operator new fails after the first `allocations` calls. For a test
// program that links the target AllocationMeter. One at a time in a thread.
class NoMemory {
public:
    explicit NoMemory(std::size_t allocations = 0);
    ~NoMemory();
    NoMemory(const NoMemory&) = delete;
    NoMemory& operator=(const NoMemory&) = delete;
};

// Makes the calling thread's next operator new call this first.
void beforeTheNextAllocation(std::function<void()> action);

} // namespace DAX::Tests
