#include "support/AllocationMeter.h"

#include <algorithm>
#include <cstdlib>
#include <new>
#include <utility>

#include "support/NoMemory.h"

namespace {

thread_local std::size_t allAllocated = 0;
thread_local std::size_t largestAllocated = 0;
thread_local bool memoryRunsOut = false;
thread_local std::size_t allocationsLeft = 0;
thread_local std::function<void()> beforeNext;

bool isMemoryLeft() noexcept {
    if (!memoryRunsOut) {
        return true;
    }
    if (allocationsLeft == 0) {
        return false;
    }
    --allocationsLeft;
    return true;
}

void* allocate(std::size_t size) noexcept {
    if (beforeNext) {
        std::exchange(beforeNext, nullptr)();
    }
    if (!isMemoryLeft()) {
        return nullptr;
    }
    allAllocated += size;
    largestAllocated = std::max(largestAllocated, size);
    return std::malloc(size == 0 ? 1 : size);
}

} // namespace

void* operator new(std::size_t size) {
    void* const memory = allocate(size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return allocate(size);
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

void operator delete(void* memory, const std::nothrow_t&) noexcept {
    std::free(memory);
}

namespace DAX::Tests {

AllocationMeter::AllocationMeter() {
    allAllocated = 0;
    largestAllocated = 0;
}

std::size_t AllocationMeter::bytes() const {
    return allAllocated;
}

std::size_t AllocationMeter::largest() const {
    return largestAllocated;
}

void beforeTheNextAllocation(std::function<void()> action) {
    beforeNext = std::move(action);
}

NoMemory::NoMemory(std::size_t allocations) {
    allocationsLeft = allocations;
    memoryRunsOut = true;
}

NoMemory::~NoMemory() {
    memoryRunsOut = false;
}

} // namespace DAX::Tests
