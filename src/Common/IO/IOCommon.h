#pragma once

#include <cstdint>

namespace DAX {
namespace Common {
namespace IO {

// Sizes and positions, in bytes.
using streamsize_t = std::uint64_t;

} // namespace IO
} // namespace Common
} // namespace DAX
