#include "Common/IO/ChecksumedSink.h"

#include <utility>

#include <boost/exception/diagnostic_information.hpp>

#include "Common/Logging/LoggingStream.h"

namespace DAX::Common::IO {

const char CHECKSUMED_STREAM_MAGIC_STRING[] = "CHECKSUMED";
static_assert(sizeof(CHECKSUMED_STREAM_MAGIC_STRING) == CHECKSUMED_STREAM_MAGIC_SIZE + 1, "the size of the text");

using IOExceptions::ChecksumedSinkUnderlyingSinkNotRewound;
using IOExceptions::NotSupportedException;
using Utils::errinfo_subject;

ChecksumedSink::ChecksumedSink(std::shared_ptr<IStorageSink> sink, bool appendChecksum)
    : m_crcSink(std::make_shared<CRCSink<Crc32>>())
    , m_sink(std::move(sink))
    , m_appendChecksum(appendChecksum)
    , m_branchSink(true) {
    m_branchSink.addBranch(m_sink);
    m_branchSink.addBranch(m_crcSink);
}

ChecksumedSink::~ChecksumedSink() {
    try {
        if (m_opened && !m_endOfDataMarked) {
            DAX_LOG(WRN) << "Destroying ChecksumedSink without markEndOfData(). CRC will not be appended.";
            m_endOfDataMarked = true;
            m_branchSink.markEndOfData();
        }
    } catch (...) {
        DAX_LOG(ERR) << "Exception caught in ~ChecksumedSink. Ignoring: "
                     << boost::current_exception_diagnostic_information(true);
    }
}

void ChecksumedSink::open() {
    throwIfOpened();
    throwIfAlreadyClosed();
    if (m_sink->position() != 0) {
        DAX_THROW(ChecksumedSinkUnderlyingSinkNotRewound(), errinfo_subject(debugName()));
    }
    m_opened = true;
}

void ChecksumedSink::writeChunk(const std::uint8_t* data, std::size_t size) {
    openIfNotOpened();
    throwIfEndOfDataMarked();
    m_branchSink.writeChunk(data, size);
}

void ChecksumedSink::markEndOfData() {
    throwIfEndOfDataMarked();
    throwIfAlreadyClosed();
    m_endOfDataMarked = true;
    if (m_appendChecksum) {
        appendTrailer();
    }
    m_sink->markEndOfData();
}

void ChecksumedSink::appendTrailer() {
    // Written past the BranchSink, so that the trailer does not enter the sum.
    const auto sum = serializers::binary::little_endian<4>::format(m_crcSink->getCRC32());
    m_sink->writeChunk(reinterpret_cast<const std::uint8_t*>(CHECKSUMED_STREAM_MAGIC_STRING),
                       CHECKSUMED_STREAM_MAGIC_SIZE);
    m_sink->writeChunk(sum.data(), sum.size());
}

streamsize_t ChecksumedSink::position() {
    openIfNotOpened();
    return m_sink->position();
}

void ChecksumedSink::seek(streamsize_t position) {
    openIfNotOpened();
    throwIfEndOfDataMarked();
    if (position != m_sink->position()) {
        DAX_THROW(NotSupportedException(), errinfo_subject(debugName()));
    }
}

void ChecksumedSink::flush() {
    openIfNotOpened();
    m_sink->flush();
}

void ChecksumedSink::close() {
    throwIfAlreadyClosed();
    throwIfNotOpened();
    if (!m_endOfDataMarked) {
        markEndOfData();
    }
    m_sink->close();
    m_opened = false;
    m_closed = true;
}

std::string ChecksumedSink::debugName() const {
    return "ChecksumedSink(" + Utils::getDebugName(*m_sink) + ")";
}

} // namespace DAX::Common::IO
