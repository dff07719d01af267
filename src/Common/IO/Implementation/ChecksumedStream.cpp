#include "Common/IO/ChecksumedStream.h"

#include <utility>

#include <boost/exception/diagnostic_information.hpp>

#include "Common/IO/CRCSink.h"
#include "Common/IO/ChecksumedSink.h"
#include "Common/IO/ScopedSeekableStream.h"
#include "Common/IO/ScopedStream.h"
#include "Common/Logging/LoggingStream.h"
#include "Utility/Utils/RethrowExceptionStream.h"

namespace DAX::Common::IO {
namespace {

using IOExceptions::ChecksumedStreamDataCorrupted;
using Utils::errinfo_subject;

const std::size_t BUFFER_SIZE = 1024;

bool isRewound(ISeekableStream& stream) {
    try {
        stream.seek(0);
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

bool hasTrailer(const std::shared_ptr<ISeekableStream>& stream) {
    if (!isRewound(*stream)) {
        return false;
    }
    const streamsize_t size = stream->size();
    if (size < CHECKSUMED_STREAM_TRAILER_SIZE) {
        return false;
    }
    CRCSink<Crc32> crcSink;
    ScopedSeekableStream payload(stream, 0, size - CHECKSUMED_STREAM_TRAILER_SIZE);
    crcSink.appendAllStream(&payload, BUFFER_SIZE);
    ScopedStream magic(stream, CHECKSUMED_STREAM_MAGIC_SIZE);
    if (magic.readAllText(BUFFER_SIZE) != CHECKSUMED_STREAM_MAGIC_STRING) {
        return false;
    }
    serializers::binary::little_endian<4>::Bytes sum;
    stream->read(sum);
    return serializers::binary::little_endian<4>::parse<std::uint32_t>(sum) == crcSink.getCRC32();
}

} // namespace

ChecksumedStream::ChecksumedStream(std::shared_ptr<IStorageStream> stream) : m_stream(std::move(stream)) {}

ChecksumedStream::~ChecksumedStream() {
    try {
        if (m_opened) {
            ChecksumedStream::close();
        }
    } catch (...) {
        DAX_LOG(ERR) << "Exception caught in ~ChecksumedStream. Ignoring: "
                     << boost::current_exception_diagnostic_information(true);
    }
}

bool ChecksumedStream::verifyChecksum(std::shared_ptr<ISeekableStream> stream) {
    try {
        return hasTrailer(stream);
    } catch (...) {
        Utils::rethrowWithText(
            [&stream](std::ostream& text) { text << "Verifying the checksum of " << Utils::getDebugName(*stream); });
    }
}

bool ChecksumedStream::openCheck() {
    throwIfOpened();
    throwIfAlreadyClosed();
    return verifyChecksum(m_stream);
}

void ChecksumedStream::open() {
    if (!openCheck()) {
        DAX_THROW(ChecksumedStreamDataCorrupted(), errinfo_subject(debugName()));
    }
    m_payload = std::make_shared<ScopedStorageStream>(m_stream, 0, m_stream->size() - CHECKSUMED_STREAM_TRAILER_SIZE);
    m_opened = true;
}

ScopedStorageStream& ChecksumedStream::payload() {
    openIfNotOpened();
    return *m_payload;
}

std::size_t ChecksumedStream::readChunk(std::uint8_t* data, std::size_t size) {
    return payload().readChunk(data, size);
}

bool ChecksumedStream::atEnd() {
    return payload().atEnd();
}

streamsize_t ChecksumedStream::position() {
    return payload().position();
}

void ChecksumedStream::seek(streamsize_t position) {
    payload().seek(position);
}

streamsize_t ChecksumedStream::size() {
    return payload().size();
}

void ChecksumedStream::close() {
    throwIfAlreadyClosed();
    throwIfNotOpened();
    // Closed even if the stream below fails to close.
    m_opened = false;
    m_closed = true;
    m_payload->close();
}

std::string ChecksumedStream::debugName() const {
    return "ChecksumedStream(" + Utils::getDebugName(*m_stream) + ")";
}

} // namespace DAX::Common::IO
