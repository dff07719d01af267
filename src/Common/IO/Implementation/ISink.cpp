#include "Common/IO/ISink.h"

#include <algorithm>
#include <memory>

#include "Common/IO/StreamBuffer.h"

namespace DAX::Common::IO {

void ISink::throwIfEndOfDataMarked() {
    if (endOfDataMarked()) {
        DAX_THROW(IOExceptions::EndOfDataMarkedException(), Utils::errinfo_subject(Utils::getDebugName(*this)));
    }
}

streamsize_t ISink::appendAllStream(IStream* stream, std::size_t bufferSize) {
    // A shared pointer that owns nothing.
    const std::shared_ptr<IStream> borrowed(std::shared_ptr<void>(), stream);
    StreamBuffer buffer(borrowed, bufferSize);
    return appendAllStream(&buffer);
}

streamsize_t ISink::appendAllStream(IZeroCopyStream* stream) {
    streamsize_t count = 0;
    const std::uint8_t* data = nullptr;
    std::size_t size = 0;
    while (stream->nextChunk(&data, &size)) {
        writeChunk(data, size);
        count += size;
    }
    // A sink that opens at its first use must be opened by an empty copy, too.
    if (count == 0) {
        writeChunk(nullptr, 0);
    }
    return count;
}

void IZeroCopySink::writeChunk(const std::uint8_t* data, std::size_t size) {
    while (size != 0) {
        std::uint8_t* chunk = nullptr;
        std::size_t chunkSize = 0;
        nextChunk(&chunk, &chunkSize);
        const std::size_t filled = std::min(size, chunkSize);
        std::copy_n(data, filled, chunk);
        giveBack(chunkSize - filled);
        data += filled;
        size -= filled;
    }
}

streamsize_t detail::appendAllStream(IZeroCopySink* sink, IStream* stream) {
    streamsize_t count = 0;
    for (;;) {
        std::uint8_t* chunk = nullptr;
        std::size_t chunkSize = 0;
        sink->nextChunk(&chunk, &chunkSize);
        const std::size_t filled = stream->readChunk(chunk, chunkSize);
        sink->giveBack(chunkSize - filled);
        if (filled == 0) {
            return count;
        }
        count += filled;
    }
}

streamsize_t detail::appendAllStream(IZeroCopySink* sink, IZeroCopyStream* stream) {
    return sink->appendAllStream(stream);
}

} // namespace DAX::Common::IO
