#pragma once

#include <memory>
#include <string>

#include "Common/IO/IStream.h"
#include "Common/IO/ITransactionalEntity.h"
#include "Utility/Utils/IDebugName.h"

namespace DAX::Common::IO {

// A part of a stream, as a stream of the same Interface with positions of its own. The first use checks that the part
// lies within the stream and throws OutOfRangeException if it does not. Every use throws OutOfRangeException when
// somebody has moved the stream out of the part. One thread at a time.
template <class Interface>
class ScopedView : public Interface, public ITransactionalEntity, public Utils::IDebugName {
public:
    std::size_t readChunk(std::uint8_t* data, std::size_t size) override;
    bool atEnd() override;
    streamsize_t position() override;
    void seek(streamsize_t position) override;
    streamsize_t size() override;

    void transactionSaved(ITransaction* transaction) override;

    // Saves or restores only whether it was used; its position is that of the stream, which takes part by itself.
    void transactionSerialize(IStoreTransaction* transaction) override;

    std::string debugName() const override;

protected:
    // `start` and `size` in bytes. Throws GenericException when the end does not fit in 64 bits.
    ScopedView(std::shared_ptr<Interface> stream, streamsize_t start, streamsize_t size);

    void openIfNotOpened();

    Interface& stream() { return *m_stream; }

private:
    const std::shared_ptr<Interface> m_stream;
    const streamsize_t m_start;
    const streamsize_t m_size;
    bool m_opened = false;
};

extern template class ScopedView<ISeekableStream>;
extern template class ScopedView<IStorageStream>;

} // namespace DAX::Common::IO
