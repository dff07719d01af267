#pragma once

#include "Common/IO/IOCommon.h"
#include "serializers/binary/ISerializer.h"

namespace DAX::Common::IO {

// A serializer that counts its bytes.
class ISerializer : public serializers::binary::ISerializer {
public:
    // Throws GenericException when the count would overflow; the count then stays.
    void serializeData(std::uint8_t* data, std::size_t size) override;

protected:
    // Moves `size` bytes between `data` and the serializer's storage, in the direction that saving() tells. `position`
    // is the number of bytes before these.
    virtual void serializeDataImpl(streamsize_t position, std::uint8_t* data, std::size_t size) = 0;

private:
    streamsize_t m_position = 0;
};

} // namespace DAX::Common::IO
