#pragma once

#include <memory>
#include <string>

#include "Common/IO/IStream.h"
#include "Common/IO/ScopedStorageStream.h"
#include "Utility/Utils/IDebugName.h"

namespace DAX::Common::IO {

// The data of a checksummed file, without its trailer. It is checked whole when it is opened.
class ChecksumedStream : public IStorageStream, public Utils::IDebugName {
public:
    explicit ChecksumedStream(std::shared_ptr<IStorageStream> stream);
    ~ChecksumedStream() override;

    // Whether the trailer stands at the end of the whole file and matches the data before it; false too when the
    // stream cannot be brought to its beginning. Other failures throw what the stream throws.
    static bool verifyChecksum(std::shared_ptr<ISeekableStream> stream);

    // What open() looks at, without opening. Throws as open() where that is not about the data.
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
