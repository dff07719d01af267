#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace Streams {

// The yardstick: a checksummed file by the C library's buffered files and Boost's checksum alone. Failures throw
// std::runtime_error.

// Writes the data in chunks of this size, and the trailer, and takes them to the medium.
void writePlainly(const std::string& path, const std::vector<unsigned char>& data, std::size_t chunkSize);

// Whether the trailer matches, read in chunks of this size.
bool verifyPlainly(const std::string& path, std::size_t chunkSize);

} // namespace Streams
