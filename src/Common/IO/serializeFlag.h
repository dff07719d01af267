#pragma once

#include <cstdint>

#include "serializers/binary/ISerializer.h"

namespace DAX::Common::IO {

// Saves a flag as one byte, or loads it, as the serializer does.
inline void serializeFlag(serializers::binary::ISerializer& serializer, bool& flag) {
    std::uint8_t byte = flag ? 1 : 0;
    serializer.serializeData(&byte, sizeof(byte));
    flag = byte != 0;
}

} // namespace DAX::Common::IO
