#include "DAXCommon/Encoding.h"

#include <string_view>

#include "Utility/Utils/Hexadecimal.h"

namespace DAX::DAXCommon {

std::string Encoding::binToHex(const unsigned char* data, std::size_t size) {
    return Common::Utils::toHexadecimal(std::string_view(reinterpret_cast<const char*>(data), size));
}

} // namespace DAX::DAXCommon
