#include "AllocationMeter.h"

#include <cstdlib>
#include <new>

namespace {

thread_local std::size_t allocated = 0;

} // namespace

void* operator new(std::size_t size) {
    allocated += size;
    void* const memory = std::malloc(size == 0 ? 1 : size);
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

namespace DAX {
namespace Tests {

AllocationMeter::AllocationMeter() : m_start(allocated) {}

std::size_t AllocationMeter::bytes() const {
    return allocated - m_start;
}

} // namespace Tests
} // namespace DAX
