#pragma once

namespace KovanHost {

// The border to the system's callers, which no exception may cross: runs `function` and returns its result, or
// `failure` when it throws.
template <class Function, class Result>
Result atBorder(Result failure, Function&& function) noexcept {
    try {
        return function();
    } catch (...) {
        return failure;
    }
}

} // namespace KovanHost
