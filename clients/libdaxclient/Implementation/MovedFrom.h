#pragma once

#include <stdexcept>

namespace dax::detail {

// What an object's pointer to its inside points to. Throws std::logic_error when another object has taken it over.
template <class Pointer>
auto& insideOf(const Pointer& pointer) {
    if (pointer == nullptr) {
        throw std::logic_error("This object of the update service's client has been moved from.");
    }
    return *pointer;
}

} // namespace dax::detail
