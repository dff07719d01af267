#pragma once

#include <cerrno>

namespace DAX::Common::IO {

// Repeats a system call as long as a signal interrupts it, and returns its result.
template <class Call>
auto uninterrupted(Call call) {
    auto result = call();
    while (result < 0 && errno == EINTR) {
        result = call();
    }
    return result;
}

} // namespace DAX::Common::IO
