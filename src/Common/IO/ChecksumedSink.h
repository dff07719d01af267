#pragma once

#include <memory>
#include <string>

#include "Common/IO/BranchSink.h"
#include "Common/IO/CRCSink.h"
#include "Common/IO/ISink.h"
#include "Utility/Utils/IDebugName.h"

namespace DAX::Common::IO {

// The trailer of a checksummed file, after the data: this text, without a terminator, and the CRC-32 of the data in
// four bytes, the low one first.
extern const char CHECKSUMED_STREAM_MAGIC_STRING[];
constexpr std::size_t CHECKSUMED_STREAM_MAGIC_SIZE = 10;
constexpr std::size_t CHECKSUMED_STREAM_TRAILER_SIZE = CHECKSUMED_STREAM_MAGIC_SIZE + sizeof(std::uint32_t);

// Writes data and, at its end, the trailer. It writes strictly forward, from the beginning of the sink below. One
// thread at a time.
class ChecksumedSink : public IStorageSink, public Utils::IDebugName {
public:
    // Without `appendChecksum` no trailer is written.
    ChecksumedSink(std::shared_ptr<IStorageSink> sink, bool appendChecksum);

    // Data whose end has not been marked gets no trailer. Failures are logged.
    ~ChecksumedSink() override;

    void writeChunk(const std::uint8_t* data, std::size_t size) override;
    void markEndOfData() override;
    bool endOfDataMarked() override { return m_endOfDataMarked; }
    streamsize_t position() override;

    // Throws NotSupportedException for any position but the current one.
    void seek(streamsize_t position) override;

    // Throws ChecksumedSinkUnderlyingSinkNotRewound when the sink below is not at its beginning.
    void open() override;
    void close() override;
    bool isOpened() override { return m_opened; }
    void flush() override;
    bool alreadyClosed() override { return m_closed; }

    std::string debugName() const override;

private:
    void appendTrailer();

    const std::shared_ptr<CRCSink<Crc32>> m_crcSink;
    const std::shared_ptr<IStorageSink> m_sink;
    bool m_opened = false;
    bool m_closed = false;
    bool m_endOfDataMarked = false;
    const bool m_appendChecksum;
    BranchSink m_branchSink;
};

} // namespace DAX::Common::IO
