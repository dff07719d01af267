#pragma once

#include <cstddef>
#include <cstdint>

#include "Common/IO/IOCommon.h"
#include "Common/IO/IStream.h"
#include "Common/IO/StorageHelper.h"

namespace DAX::Common::IO {

// Where bytes are written. Every sink belongs to one thread at a time, and throws what lies below it throws.
class ISink {
public:
    virtual ~ISink() = default;

    // Writes all `size` bytes, which may be none. Throws EndOfDataMarkedException behind the end of data.
    virtual void writeChunk(const std::uint8_t* data, std::size_t size) = 0;

    // Says that no more data comes. Throws EndOfDataMarkedException the second time.
    virtual void markEndOfData() = 0;
    virtual bool endOfDataMarked() = 0;

    void throwIfEndOfDataMarked();

    // Copies all that is left of a stream, through a buffer of this size, and returns the number of bytes. Even an
    // empty copy writes once, so that a sink that opens by itself opens.
    streamsize_t appendAllStream(IStream* stream, std::size_t bufferSize);
    streamsize_t appendAllStream(IZeroCopyStream* stream);
};

// A sink that hands out its own memory to be filled.
class IZeroCopySink : public ISink {
public:
    // Memory for the next bytes, at least one. It is taken for written, but for what is given back.
    virtual void nextChunk(std::uint8_t** data, std::size_t* size) = 0;

    // The last `size` bytes of it were not filled.
    virtual void giveBack(std::size_t size) = 0;

    void writeChunk(const std::uint8_t* data, std::size_t size) override;
};

class ISeekableSink : public virtual ISink {
public:
    virtual streamsize_t position() = 0;
    virtual void seek(streamsize_t position) = 0;
};

// A sink over something that is opened and closed. It opens by itself at its first use.
class IStorageSink : public virtual ISeekableSink, protected StorageHelper<IStorageSink> {
public:
    // Throws AlreadyOpenedException, and AlreadyClosedException behind close().
    virtual void open() = 0;

    // For good; marks the end of data where it is not marked. Throws AlreadyClosedException, NotOpenedException.
    virtual void close() = 0;

    virtual bool isOpened() = 0;

    // Returns when what was written is on the medium.
    virtual void flush() = 0;

    virtual bool alreadyClosed() = 0;

private:
    friend class StorageHelper<IStorageSink>;
};

namespace detail {

// Copy all that is left of a stream into the sink's own memory; the number of bytes.
streamsize_t appendAllStream(IZeroCopySink* sink, IStream* stream);
streamsize_t appendAllStream(IZeroCopySink* sink, IZeroCopyStream* stream);

} // namespace detail

} // namespace DAX::Common::IO
