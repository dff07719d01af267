#pragma once

#include <cstddef>
#include <cstdint>

#include "Common/IO/IOCommon.h"
#include "Common/IO/IStream.h"
#include "Common/IO/StorageHelper.h"

namespace DAX::Common::IO {

// Takes bytes. Every sink belongs to one thread at a time. Besides what its operations name, each throws what the file
// or sink below it throws.
class ISink {
public:
    virtual ~ISink() = default;

    // Writes all `size` bytes, which may be none. Throws EndOfDataMarkedException after the end of data.
    virtual void writeChunk(const std::uint8_t* data, std::size_t size) = 0;

    // Says that no more data comes. Throws EndOfDataMarkedException the second time.
    virtual void markEndOfData() = 0;

    // Whether the end of data is marked; it is, even when marking it threw.
    virtual bool endOfDataMarked() = 0;

    // Throws EndOfDataMarkedException when the end of data is marked.
    void throwIfEndOfDataMarked();

    // Copies the rest of a stream and returns the number of bytes. The first form reads through a buffer of
    // `bufferSize` bytes. Even an empty copy writes once, so that a sink that opens at its first use is opened. The
    // stream is borrowed for the call.
    streamsize_t appendAllStream(IStream* stream, std::size_t bufferSize);
    streamsize_t appendAllStream(IZeroCopyStream* stream);
};

// A sink that hands out its own memory to be filled.
class IZeroCopySink : public ISink {
public:
    // Hands out memory for the next bytes, at least one. All of it counts as written, except what giveBack() returns.
    // It is valid until the next call.
    virtual void nextChunk(std::uint8_t** data, std::size_t* size) = 0;

    // Says that the last `size` bytes of the memory were not filled.
    virtual void giveBack(std::size_t size) = 0;

    void writeChunk(const std::uint8_t* data, std::size_t size) override;
};

// A sink with a position that can be moved.
class ISeekableSink : public virtual ISink {
public:
    // Where the next byte goes, in bytes from the beginning.
    virtual streamsize_t position() = 0;

    // Moves the position. Throws EndOfDataMarkedException after the end of data, and NotSupportedException where the
    // sink cannot move there.
    virtual void seek(streamsize_t position) = 0;
};

// A sink over something that is opened and closed. It opens at its first use. After close(), writing, seeking, flushing
// and position() throw AlreadyClosedException.
class IStorageSink : public virtual ISeekableSink, protected StorageHelper<IStorageSink> {
public:
    // Throws AlreadyOpenedException when it is open, and AlreadyClosedException after close().
    virtual void open() = 0;

    // Closes it for good, and marks the end of data before if it is not marked. Throws AlreadyClosedException when it
    // was closed before, and NotOpenedException when it was never opened.
    virtual void close() = 0;

    // Whether it was opened and not closed yet.
    virtual bool isOpened() = 0;

    // Returns when what was written is on the medium.
    virtual void flush() = 0;

    // Whether it has been closed.
    virtual bool alreadyClosed() = 0;

private:
    friend class StorageHelper<IStorageSink>;
};

namespace detail {

// Copy the rest of a stream into the sink's own memory and return the number of bytes.
streamsize_t appendAllStream(IZeroCopySink* sink, IStream* stream);
streamsize_t appendAllStream(IZeroCopySink* sink, IZeroCopyStream* stream);

} // namespace detail

} // namespace DAX::Common::IO
