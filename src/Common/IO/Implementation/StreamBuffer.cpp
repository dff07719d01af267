#include "Common/IO/StreamBuffer.h"

#include <algorithm>
#include <utility>

#include "Common/IO/Implementation/processIfTransactional.h"
#include "Common/IO/TransactionalSeekable.h"
#include "Utility/Utils/DAXAssert.h"
#include "Utility/Utils/ErrInfoStream.h"
#include "Utility/Utils/GenericException.h"

namespace DAX::Common::IO {

using serializers::binary::little_endian;

StreamBuffer::StreamBuffer(std::shared_ptr<IStream> stream, std::size_t bufferSize)
    : m_stream(std::move(stream))
    , m_dataBuffer(bufferSize)
    , m_position(bufferSize)
    , m_size(bufferSize)
    , m_giveBackFloor(bufferSize) {}

bool StreamBuffer::nextChunk(const std::uint8_t** data, std::size_t* size) {
    if (m_position == m_size) {
        // A position of 0 here means that the end was reached before; the stream is not asked again.
        if (m_position != 0) {
            m_giveBackFloor = m_position; // a failing read may overwrite what was handed out
            m_size = m_stream->readChunk(m_dataBuffer.data(), m_dataBuffer.size());
            m_position = 0;
        }
        m_giveBackFloor = 0;
        if (m_size == 0) {
            *data = nullptr;
            *size = 0;
            return false;
        }
    }
    *data = m_dataBuffer.data() + m_position;
    *size = m_size - m_position;
    m_position = m_size;
    return true;
}

void StreamBuffer::giveBack(std::size_t size) {
    if (size > maxGiveBackSize()) {
        DAX_THROW(IOExceptions::OutOfRangeException(), Utils::errinfo_subject(debugName()));
    }
    m_position -= size;
}

void StreamBuffer::transactionSaved(ITransaction* transaction) {
    processIfTransactional(*transaction, *m_stream);
}

void StreamBuffer::transactionSerialize(IStoreTransaction* transaction) {
    if (dynamic_cast<TransactionalSeekable<ISeekableStream>*>(m_stream.get()) == nullptr) {
        serializeUnreadData(transaction);
    } else if (transaction->serializer().saving()) {
        saveUnreadPosition(transaction);
    } else {
        loadUnreadPosition(transaction);
    }
}

void StreamBuffer::saveUnreadPosition(IStoreTransaction* transaction) {
    const std::uint64_t unreadBytes = m_size - m_position;
    transaction->serializer().save<little_endian<8>>(unreadBytes);
    const auto* const seekableStream = dynamic_cast<ISeekableStream*>(m_stream.get());
    BOOST_ASSERT(seekableStream);
    auto& transactional = dynamic_cast<TransactionalSeekable<ISeekableStream>&>(*m_stream);
    transaction->processDependency(&transactional, transactional.saveRewound(transaction, unreadBytes));
    m_giveBackFloor = m_position;
}

void StreamBuffer::loadUnreadPosition(IStoreTransaction* transaction) {
    std::uint64_t unreadBytes = 0;
    transaction->serializer().load<little_endian<8>>(unreadBytes);
    BOOST_ASSERT(m_size >= unreadBytes);
    transaction->processDependency(&dynamic_cast<TransactionalSeekable<ISeekableStream>&>(*m_stream));
    useUp();
    const auto end = m_dataBuffer.begin() + static_cast<std::ptrdiff_t>(m_size);
    const auto begin = end - static_cast<std::ptrdiff_t>(unreadBytes);
    const std::size_t bytesRead = m_stream->readChunk(m_dataBuffer.data() + m_size - unreadBytes, unreadBytes);
    std::copy_backward(begin, begin + static_cast<std::ptrdiff_t>(bytesRead), end); // a short read leaves a gap
    m_position = m_giveBackFloor = m_size - bytesRead;
    if (bytesRead != unreadBytes) {
        DAX_THROW(Utils::GenericException(), "Error while reading from underlying stream during load. bytesRead="
                                                 << bytesRead << ", unreadBytes=" << unreadBytes);
    }
}

void StreamBuffer::serializeUnreadData(IStoreTransaction* transaction) {
    auto& serializer = transaction->serializer();
    std::uint64_t position = m_position;
    serializer.serialize<little_endian<8>>(position);
    std::uint64_t unreadBytes = m_size - m_position;
    serializer.serialize<little_endian<4>>(unreadBytes);
    const std::size_t dataBufferSize = position + std::min(unreadBytes, UINT64_MAX - position); // never wraps
    if (!serializer.saving()) {
        BOOST_ASSERT(m_dataBuffer.size() >= dataBufferSize);
        useUp();
    }
    serializer.serializeData(m_dataBuffer.data() + position, unreadBytes);
    m_position = m_giveBackFloor = position;
    m_size = dataBufferSize;
}

void StreamBuffer::useUp() {
    m_position = m_giveBackFloor = m_size;
}

std::string StreamBuffer::debugName() const {
    return "StreamBuffer(" + Utils::getDebugName(*m_stream) + ")";
}

} // namespace DAX::Common::IO
