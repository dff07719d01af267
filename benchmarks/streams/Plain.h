#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace Streams {

// The yardstick: a checksummed file, made with nothing but the C library's buffered files and Boost's checksum.
// Failures throw std::runtime_error.

// Writes the data in chunks of this size, then the trailer. All is on the medium when this returns.
void writePlainly(const std::string& path, const std::vector<unsigned char>& data, std::size_t chunkSize);

// Reads the file in chunks of this size and tells whether its trailer matches.
bool verifyPlainly(const std::string& path, std::size_t chunkSize);

} // namespace Streams
