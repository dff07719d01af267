#pragma once

#include <chrono>
#include <thread>

namespace DAX::Tests {

// Asks repeatedly until `condition` holds. False when that takes longer than the bound.
template <class Condition>
bool waitUntil(Condition condition, std::chrono::milliseconds bound = std::chrono::seconds(20)) {
    const auto deadline = std::chrono::steady_clock::now() + bound;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= deadline) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

} // namespace DAX::Tests
