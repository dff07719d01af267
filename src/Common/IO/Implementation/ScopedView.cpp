#include "Common/IO/ScopedView.h"

#include <algorithm>
#include <utility>

#include "Common/IO/Implementation/processIfTransactional.h"
#include "Common/IO/serializeFlag.h"
#include "Utility/Utils/RethrowExceptionStream.h"
#include "Utility/Utils/SafePlus.h"

namespace DAX::Common::IO {
namespace {

using IOExceptions::OutOfRangeException;
using Utils::errinfo_subject;

// The class name of each view in messages.
template <class Interface>
const char* const CLASS_NAME = nullptr;
template <>
const char* const CLASS_NAME<ISeekableStream> = "ScopedSeekableStream";
template <>
const char* const CLASS_NAME<IStorageStream> = "ScopedStorageStream";

void checkEnd(const char* name, streamsize_t start, streamsize_t size) {
    try {
        Utils::safePlus(start, size);
    } catch (...) {
        Utils::rethrowWithText([&](std::ostream& text) { text << name << ": start=" << start << " size=" << size; });
    }
}

} // namespace

template <class Interface>
ScopedView<Interface>::ScopedView(std::shared_ptr<Interface> stream, streamsize_t start, streamsize_t size)
    : m_stream(std::move(stream)), m_start(start), m_size(size) {
    checkEnd(CLASS_NAME<Interface>, start, size);
}

template <class Interface>
void ScopedView<Interface>::openIfNotOpened() {
    if (m_opened) {
        return;
    }
    m_opened = true;
    const streamsize_t end = m_stream->size();
    if (m_start > end) {
        DAX_THROW(OutOfRangeException(), errinfo_subject(debugName())
                                             << CLASS_NAME<Interface> << " should start on " << m_start
                                             << ", which is after end of underlying stream " << end);
    }
    if (m_start + m_size > end) {
        DAX_THROW(OutOfRangeException(), errinfo_subject(debugName())
                                             << CLASS_NAME<Interface> << " should end on " << m_start + m_size
                                             << ", which is after end of underlying stream " << end);
    }
    m_stream->seek(m_start);
}

template <class Interface>
std::size_t ScopedView<Interface>::readChunk(std::uint8_t* data, std::size_t size) {
    const streamsize_t remaining = m_size - position();
    return m_stream->readChunk(data, std::min<streamsize_t>(size, remaining));
}

template <class Interface>
bool ScopedView<Interface>::atEnd() {
    return m_size == position();
}

template <class Interface>
streamsize_t ScopedView<Interface>::position() {
    openIfNotOpened();
    const streamsize_t offset = m_stream->position();
    if (offset < m_start) {
        DAX_THROW(OutOfRangeException(), errinfo_subject(debugName())
                                             << "Underlying offset is less than start offset: start=" << m_start
                                             << " offset=" << offset);
    }
    const streamsize_t position = offset - m_start;
    if (position > m_size) {
        DAX_THROW(OutOfRangeException(), errinfo_subject(debugName())
                                             << "Position is bigger than stream size: stream size=" << m_size
                                             << " position=" << position);
    }
    return position;
}

template <class Interface>
void ScopedView<Interface>::seek(streamsize_t position) {
    openIfNotOpened();
    if (position > m_size) {
        DAX_THROW(OutOfRangeException(), errinfo_subject(debugName())
                                             << "Position " << position << " is bigger than stream size " << m_size);
    }
    m_stream->seek(m_start + position);
}

template <class Interface>
streamsize_t ScopedView<Interface>::size() {
    openIfNotOpened();
    return m_size;
}

template <class Interface>
void ScopedView<Interface>::transactionSaved(ITransaction* transaction) {
    processIfTransactional(*transaction, *m_stream);
}

template <class Interface>
void ScopedView<Interface>::transactionSerialize(IStoreTransaction* transaction) {
    serializeFlag(transaction->serializer(), m_opened);
}

template <class Interface>
std::string ScopedView<Interface>::debugName() const {
    return std::string(CLASS_NAME<Interface>) + "(" + Utils::getDebugName(*m_stream) + ")";
}

template class ScopedView<ISeekableStream>;
template class ScopedView<IStorageStream>;

} // namespace DAX::Common::IO
