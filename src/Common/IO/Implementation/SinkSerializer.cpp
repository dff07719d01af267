#include "Common/IO/SinkSerializer.h"

namespace DAX::Common::IO {

void SinkSerializer::serializeDataImpl(streamsize_t position, std::uint8_t* data, std::size_t size) {
    m_sink->seek(position);
    m_sink->writeChunk(data, size);
}

} // namespace DAX::Common::IO
