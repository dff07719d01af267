#pragma once

#include <cstdint>

#include "serializers/binary/ISerializer.h"

namespace DAX::Common::IO {

// Saves or loads a flag as one byte, in the direction of the serializer.
inline void serializeFlag(serializers::binary::ISerializer& serializer, bool& flag) {
    std::uint8_t byte = flag ? 1 : 0;
    serializer.serializeData(&byte, sizeof(byte));
    flag = byte != 0;
}

} // namespace DAX::Common::IO
