#pragma once

#include <cerrno>

namespace DAX::Common::IO {

// What a system call gives that is made again as long as signals interrupt it.
template <class Call>
auto uninterrupted(Call call) {
    auto result = call();
    while (result < 0 && errno == EINTR) {
        result = call();
    }
    return result;
}

} // namespace DAX::Common::IO
