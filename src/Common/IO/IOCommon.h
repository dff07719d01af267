#pragma once

#include <cstddef>
#include <cstdint>

namespace DAX::Common::IO {

// Sizes and positions, in bytes.
using streamsize_t = std::uint64_t;

// A chunk for reading small files as a whole, in bytes.
inline constexpr std::size_t SMALL_CHUNK_SIZE = 1024;

} // namespace DAX::Common::IO
