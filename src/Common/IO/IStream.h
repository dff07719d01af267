#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>

#include "Common/IO/IOCommon.h"
#include "Common/IO/StorageHelper.h"

namespace DAX::Common::IO {

// Bytes to read. Every stream belongs to one thread at a time, and throws what lies below it throws.
class IStream {
public:
    virtual ~IStream() = default;

    // How many bytes it put into `data`, which has room for `size`; it may be fewer than there are. 0 is the end of the
    // data.
    virtual std::size_t readChunk(std::uint8_t* data, std::size_t size) = 0;

    // Reads a value as it lies in memory, with one read; false, and the value stays, at the end of the data. Throws
    // StreamDepletedException when there is only a part of it, which then stands in the value.
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

    // As tryRead; StreamDepletedException at the end of the data too.
    template <class T>
    void read(T& pod) {
        if (!tryRead(pod)) {
            DAX_THROW(IOExceptions::StreamDepletedException(), Utils::errinfo_subject(Utils::getDebugName(*this))
                                                                   << "Stream is empty.");
        }
    }

    // All that is left, read in chunks of this size.
    std::string readAllText(std::size_t chunkSize);
};

// A stream that hands out its own memory.
class IZeroCopyStream : public IStream {
public:
    // The next bytes, of a number that the stream chooses; false, null and 0 at the end of the data. They are valid
    // until the next call.
    virtual bool nextChunk(const std::uint8_t** data, std::size_t* size) = 0;

    // Takes the last `size` bytes back, to hand them out again. Throws OutOfRangeException when it did not hand them
    // out.
    virtual void giveBack(std::size_t size) = 0;

    std::size_t readChunk(std::uint8_t* data, std::size_t size) override;
};

// A stream that knows its end.
class IBoundedStream : public virtual IStream {
public:
    virtual bool atEnd() = 0;
};

class ISeekableStream : public virtual IBoundedStream {
public:
    virtual streamsize_t position() = 0;

    // Throws OutOfRangeException for a position behind the end; the end itself is one.
    virtual void seek(streamsize_t position) = 0;

    virtual streamsize_t size() = 0;
};

// A stream over something that is opened and closed. It opens by itself at its first use.
class IStorageStream : public virtual ISeekableStream, protected StorageHelper<IStorageStream> {
public:
    // Throws AlreadyOpenedException, and AlreadyClosedException behind close().
    virtual void open() = 0;

    // For good. Throws AlreadyClosedException, NotOpenedException.
    virtual void close() = 0;

    virtual bool isOpened() = 0;
    virtual bool alreadyClosed() = 0;

private:
    friend class StorageHelper<IStorageStream>;
};

} // namespace DAX::Common::IO
