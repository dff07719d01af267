#pragma once

#include "Common/IO/ISerializer.h"
#include "Common/IO/ISink.h"

namespace DAX::Common::IO {

// Saves to a sink, from its position 0 on and at places of its own, wherever the sink stands.
class SinkSerializer : public ISerializer {
public:
    // The sink is borrowed.
    explicit SinkSerializer(ISeekableSink* sink) : m_sink(sink) {}

    bool saving() override { return true; }

protected:
    void serializeDataImpl(streamsize_t position, std::uint8_t* data, std::size_t size) override;

private:
    ISeekableSink* m_sink;
};

} // namespace DAX::Common::IO
