#pragma once

#include <cstddef>
#include <cstdint>

#include "serializers/binary/SerializerMixin.h"

namespace serializers::binary {

// Writes values or reads them, through the same calls. One thread at a time.
class ISerializer : public SerializerMixin<ISerializer> {
public:
    virtual ~ISerializer() = default;

    // Whether this serializer writes. The answer never changes.
    virtual bool saving() = 0;

    // Writes the bytes, or fills all of them. Throws what the stream or sink below throws.
    virtual void serializeData(std::uint8_t* data, std::size_t size) = 0;
};

} // namespace serializers::binary
