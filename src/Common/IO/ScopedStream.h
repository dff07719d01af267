#pragma once

#include <memory>
#include <string>

#include "Common/IO/IStream.h"
#include "Common/IO/ITransactionalEntity.h"
#include "Utility/Utils/IDebugName.h"

namespace DAX::Common::IO {

// The next `size` bytes of a stream, at the most. One thread at a time.
class ScopedStream : public IStream, public ITransactionalEntity, public Utils::IDebugName {
public:
    ScopedStream(std::shared_ptr<IStream> stream, streamsize_t size);

    std::size_t readChunk(std::uint8_t* data, std::size_t size) override;

    void transactionSaved(ITransaction* transaction) override;

    // Saves or restores only how many bytes remain; the stream below takes part by itself.
    void transactionSerialize(IStoreTransaction* transaction) override;

    std::string debugName() const override;

private:
    const std::shared_ptr<IStream> m_stream;
    streamsize_t m_bytesRemaining;
};

} // namespace DAX::Common::IO
