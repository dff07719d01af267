#pragma once

#include <cstddef>
#include <cstring>
#include <vector>

namespace DAX::Tests {

// The place of each virtual operation in its table is a promise to programs that were built earlier. A virtual
// destructor takes two places.

// A pointer to a virtual operation holds its offset in the table. Machines differ in the use of its lowest bit.
template <class Operation>
std::size_t slotOf(Operation operation) {
    std::size_t offset = 0;
    static_assert(sizeof(operation) >= sizeof(offset), "the offset comes first");
    std::memcpy(&offset, &operation, sizeof(offset));
    return offset / sizeof(void*);
}

template <class... Operations>
std::vector<std::size_t> slotsOf(Operations... operations) {
    return {slotOf(operations)...};
}

// The slots of an interface that has this many operations, all after its destructor.
inline std::vector<std::size_t> slotsBehindTheDestructor(std::size_t operations) {
    std::vector<std::size_t> slots;
    for (std::size_t slot = 2; slot < operations + 2; ++slot) {
        slots.push_back(slot);
    }
    return slots;
}

} // namespace DAX::Tests
