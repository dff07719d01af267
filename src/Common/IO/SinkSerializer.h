#pragma once

#include "Common/IO/ISerializer.h"
#include "Common/IO/ISink.h"

namespace DAX::Common::IO {

// Saves to a sink, from the sink's position 0 on. It keeps its own position, so the sink may be moved in between.
class SinkSerializer : public ISerializer {
public:
    // The sink is borrowed, and must outlive the serializer.
    explicit SinkSerializer(ISeekableSink* sink) : m_sink(sink) {}

    bool saving() override { return true; }

protected:
    void serializeDataImpl(streamsize_t position, std::uint8_t* data, std::size_t size) override;

private:
    ISeekableSink* m_sink;
};

} // namespace DAX::Common::IO
