#pragma once

namespace KovanHost {

// The border to the system's callers: runs `function` and returns its result, or `failure` when an exception would
// leave it.
template <class Function, class Result>
Result atBorder(Result failure, Function&& function) noexcept {
    try {
        return function();
    } catch (...) {
        return failure;
    }
}

} // namespace KovanHost
