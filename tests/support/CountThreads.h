#pragma once

#include <cstddef>
#include <filesystem>
#include <iterator>

namespace DAX::Tests {

// How many threads this process has now, the calling one included.
inline std::ptrdiff_t countThreads() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/task"), {});
}

} // namespace DAX::Tests
