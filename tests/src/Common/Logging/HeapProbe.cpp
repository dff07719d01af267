#include "HeapProbe.h"

#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

thread_local unsigned int allocationCount = 0;
thread_local bool exhausted = false;

} // namespace

unsigned int HeapProbe::allocations() {
    return allocationCount;
}

void HeapProbe::exhaust() {
    exhausted = true;
}

void* operator new(std::size_t size) {
    ++allocationCount;
    void* const memory = exhausted ? nullptr : std::malloc(size != 0 ? size : 1);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
