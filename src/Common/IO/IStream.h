#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>

#include "Common/IO/IOCommon.h"
#include "Common/IO/StorageHelper.h"

namespace DAX::Common::IO {

// Gives bytes. Every stream belongs to one thread at a time. Besides what its operations name, each throws what the
// file or stream below it throws.
class IStream {
public:
    virtual ~IStream() = default;

    // Reads up to `size` bytes into `data` and returns how many. It may be fewer than `size`, although more are to
    // come. 0 is the end of the data, unless `size` is 0.
    virtual std::size_t readChunk(std::uint8_t* data, std::size_t size) = 0;

    // Reads a value byte by byte, as it lies in memory, with one call of readChunk(). Returns false at the end of the
    // data, and leaves the value as it is. Throws StreamDepletedException when only a part of the value is left; that
    // part has then overwritten it.
    template <class T>
    bool tryRead(T& pod) {
        static_assert(std::is_trivially_copyable<T>::value, "the bytes must be the value");
        const std::size_t bytesRead = readChunk(reinterpret_cast<std::uint8_t*>(&pod), sizeof(pod));
        if (bytesRead == 0) {
            return false;
        }
        if (bytesRead < sizeof(pod)) {
            DAX_THROW(IOExceptions::StreamDepletedException(), Utils::errinfo_subject(Utils::getDebugName(*this))
                                                                   << "Stream does not contain full entry. bytesRead="
                                                                   << bytesRead << ", sizeof(pod)=" << sizeof(pod));
        }
        return true;
    }

    // Like tryRead(), but the end of the data throws StreamDepletedException, too.
    template <class T>
    void read(T& pod) {
        if (!tryRead(pod)) {
            DAX_THROW(IOExceptions::StreamDepletedException(), Utils::errinfo_subject(Utils::getDebugName(*this))
                                                                   << "Stream is empty.");
        }
    }

    // The rest of the data, read in chunks of `chunkSize` bytes.
    std::string readAllText(std::size_t chunkSize);
};

// A stream that hands out its own memory.
class IZeroCopyStream : public IStream {
public:
    // Hands out the next bytes; the stream chooses how many. At the end of the data it returns false, with null and 0.
    // The bytes are valid until the next call.
    virtual bool nextChunk(const std::uint8_t** data, std::size_t* size) = 0;

    // Takes back the last `size` bytes that it handed out, to hand them out again. Throws OutOfRangeException for more
    // than it can take back.
    virtual void giveBack(std::size_t size) = 0;

    std::size_t readChunk(std::uint8_t* data, std::size_t size) override;
};

// A stream that knows its end.
class IBoundedStream : public virtual IStream {
public:
    // Whether no byte is left to read.
    virtual bool atEnd() = 0;
};

// A stream with a position that can be moved.
class ISeekableStream : public virtual IBoundedStream {
public:
    // Where the next byte comes from, in bytes from the beginning.
    virtual streamsize_t position() = 0;

    // Moves the position. The end itself is a legal position; a greater one throws OutOfRangeException.
    virtual void seek(streamsize_t position) = 0;

    // The length of the whole data, in bytes.
    virtual streamsize_t size() = 0;
};

// A stream over something that is opened and closed. It opens at its first use. After close(), reading, seeking,
// atEnd(), position() and size() throw AlreadyClosedException.
class IStorageStream : public virtual ISeekableStream, protected StorageHelper<IStorageStream> {
public:
    // Throws AlreadyOpenedException when it is open, and AlreadyClosedException after close().
    virtual void open() = 0;

    // Closes it for good. Throws AlreadyClosedException when it was closed before, and NotOpenedException when it was
    // never opened.
    virtual void close() = 0;

    // Whether it was opened and not closed yet.
    virtual bool isOpened() = 0;

    // Whether it has been closed.
    virtual bool alreadyClosed() = 0;

private:
    friend class StorageHelper<IStorageStream>;
};

} // namespace DAX::Common::IO
