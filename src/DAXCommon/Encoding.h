#pragma once

#include <cstddef>
#include <string>

namespace DAX::DAXCommon {

// How bytes are written as text.
namespace Encoding {

// Two lower-case hexadecimal digits for each byte, the first byte first.
std::string binToHex(const unsigned char* data, std::size_t size);

} // namespace Encoding

} // namespace DAX::DAXCommon
