#include "DAXCommon/Encoding.h"

namespace DAX::DAXCommon {

std::string Encoding::binToHex(const unsigned char* data, std::size_t size) {
    static const char digits[] = "0123456789abcdef";
    std::string text;
    text.reserve(2 * size);
    for (const unsigned char* const end = data + size; data != end; ++data) {
        text += digits[*data >> 4];
        text += digits[*data & 0xfU];
    }
    return text;
}

} // namespace DAX::DAXCommon
