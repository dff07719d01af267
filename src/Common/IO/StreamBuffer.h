#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Common/IO/IStream.h"
#include "Common/IO/ITransactionalEntity.h"
#include "Utility/Utils/IDebugName.h"

namespace DAX::Common::IO {

// Reads ahead from a stream into a buffer of its own, and hands out pointers into it: a copy touches the data once.
// Nothing is allocated after the construction.
class StreamBuffer : public IZeroCopyStream, public ITransactionalEntity, public Utils::IDebugName {
public:
    // The size in bytes; a buffer of 0 gives no data.
    StreamBuffer(std::shared_ptr<IStream> stream, std::size_t bufferSize);

    bool nextChunk(const std::uint8_t** data, std::size_t* size) override;

    // Reaches no further back than the last fill; nothing can be given back after a fill that failed.
    void giveBack(std::size_t size) override;
    std::size_t maxGiveBackSize() const { return m_position - m_giveBackFloor; }

    void transactionSaved(ITransaction* transaction) override;

    // Where the stream itself can take part, only its position is saved, less what was read ahead; else the unread
    // data. A load that fails leaves as unread data no more than what it has got of the stream.
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
