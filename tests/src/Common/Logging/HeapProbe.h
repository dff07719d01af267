#pragma once

// Replaces operator new in this test program.
namespace HeapProbe {

// How many times the current thread has allocated.
unsigned int allocations();

// From now on every allocation of the current thread throws std::bad_alloc.
void exhaust();

} // namespace HeapProbe
