#include "Common/IO/ScopedStream.h"

#include <algorithm>
#include <utility>

#include "Common/IO/Implementation/processIfTransactional.h"
#include "serializers/binary/little_endian.h"

namespace DAX::Common::IO {

ScopedStream::ScopedStream(std::shared_ptr<IStream> stream, streamsize_t size)
    : m_stream(std::move(stream)), m_bytesRemaining(size) {}

std::size_t ScopedStream::readChunk(std::uint8_t* data, std::size_t size) {
    if (m_bytesRemaining == 0) {
        return 0;
    }
    const std::size_t bytesRead = m_stream->readChunk(data, std::min<streamsize_t>(size, m_bytesRemaining));
    m_bytesRemaining -= bytesRead;
    return bytesRead;
}

void ScopedStream::transactionSaved(ITransaction* transaction) {
    processIfTransactional(*transaction, *m_stream);
}

void ScopedStream::transactionSerialize(IStoreTransaction* transaction) {
    transaction->serializer().serialize<serializers::binary::little_endian<8>>(m_bytesRemaining);
}

std::string ScopedStream::debugName() const {
    return "ScopedStream(" + Utils::getDebugName(*m_stream) + ", bytesRemaining=" + std::to_string(m_bytesRemaining) +
           ")";
}

} // namespace DAX::Common::IO
