#pragma once

#include <memory>
#include <string>

#include "Common/IO/IStream.h"
#include "Common/IO/ITransactionalEntity.h"
#include "Utility/Utils/IDebugName.h"

namespace DAX::Common::IO {

// A part of a stream, as a stream of the same Interface with positions of its own. Whether the part lies within the
// stream is looked at when it is first used: OutOfRangeException where it does not. OutOfRangeException also where
// somebody has moved the stream out of the part.
template <class Interface>
class ScopedView : public Interface, public ITransactionalEntity, public Utils::IDebugName {
public:
    std::size_t readChunk(std::uint8_t* data, std::size_t size) override;
    bool atEnd() override;
    streamsize_t position() override;
    void seek(streamsize_t position) override;
    streamsize_t size() override;

    void transactionSaved(ITransaction* transaction) override;

    // Saves whether it was used: its position is the stream's, which takes part by itself.
    void transactionSerialize(IStoreTransaction* transaction) override;

    std::string debugName() const override;

protected:
    // Throws GenericException when the end does not fit in 64 bits.
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
