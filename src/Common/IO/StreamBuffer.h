#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Common/IO/IStream.h"
#include "Common/IO/ITransactionalEntity.h"
#include "Utility/Utils/IDebugName.h"

namespace DAX::Common::IO {

// Reads ahead from a stream into a buffer of its own and hands out pointers into it, so that a copy touches the data
// once. It allocates nothing after its construction. One thread at a time.
class StreamBuffer : public IZeroCopyStream, public ITransactionalEntity, public Utils::IDebugName {
public:
    // `bufferSize` in bytes; a buffer of 0 bytes gives no data.
    StreamBuffer(std::shared_ptr<IStream> stream, std::size_t bufferSize);

    bool nextChunk(const std::uint8_t** data, std::size_t* size) override;

    // Takes back at most what maxGiveBackSize() tells: nothing from before the last fill, and nothing after a fill that
    // failed.
    void giveBack(std::size_t size) override;
    std::size_t maxGiveBackSize() const { return m_position - m_giveBackFloor; }

    void transactionSaved(ITransaction* transaction) override;

    // If the stream below can take part, only its position is saved, reduced by what was read ahead; otherwise the
    // unread data is saved. A load that fails keeps as unread data only what it got from the stream.
    void transactionSerialize(IStoreTransaction* transaction) override;

    std::string debugName() const override;

private:
    void saveUnreadPosition(IStoreTransaction* transaction);
    void loadUnreadPosition(IStoreTransaction* transaction);
    void serializeUnreadData(IStoreTransaction* transaction);
    void useUp();

    const std::shared_ptr<IStream> m_stream;
    std::vector<std::uint8_t> m_dataBuffer;
    std::size_t m_position;
    std::size_t m_size;
    std::size_t m_giveBackFloor;
};

} // namespace DAX::Common::IO
