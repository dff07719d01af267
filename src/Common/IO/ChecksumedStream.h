#pragma once

#include <memory>
#include <string>

#include "Common/IO/IStream.h"
#include "Common/IO/ScopedStorageStream.h"
#include "Utility/Utils/IDebugName.h"

namespace DAX::Common::IO {

// The data of a checksummed file, without its trailer. Opening it checks the whole file. One thread at a time.
class ChecksumedStream : public IStorageStream, public Utils::IDebugName {
public:
    explicit ChecksumedStream(std::shared_ptr<IStorageStream> stream);
    ~ChecksumedStream() override;

    // Whether the file ends with a trailer that matches the data before it; false, too, when the stream cannot be
    // rewound. Other failures throw what the stream throws.
    static bool verifyChecksum(std::shared_ptr<ISeekableStream> stream);

    // The check that open() makes, without opening: false where open() throws ChecksumedStreamDataCorrupted. Otherwise
    // it throws what open() throws.
    bool openCheck();

    std::size_t readChunk(std::uint8_t* data, std::size_t size) override;
    bool atEnd() override;
    streamsize_t position() override;
    void seek(streamsize_t position) override;
    streamsize_t size() override;

    // Throws ChecksumedStreamDataCorrupted when the check fails.
    void open() override;
    void close() override;
    bool isOpened() override { return m_opened; }
    bool alreadyClosed() override { return m_closed; }

    std::string debugName() const override;

private:
    ScopedStorageStream& payload();

    const std::shared_ptr<IStorageStream> m_stream;
    std::shared_ptr<ScopedStorageStream> m_payload;
    bool m_opened = false;
    bool m_closed = false;
};

} // namespace DAX::Common::IO
