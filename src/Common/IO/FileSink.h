#pragma once

#include <cstdio>
#include <string>

#include <boost/core/noncopyable.hpp>
#include <boost/filesystem/path.hpp>
#include <boost/optional.hpp>

#include "Common/IO/FileExceptions.h"
#include "Common/IO/ISink.h"
#include "Common/IO/TransactionalSeekable.h"
#include "Utility/Utils/FileDescriptor.h"
#include "Utility/Utils/IDebugName.h"

namespace DAX::Common::IO {

// A file to write. Marking the end of data brings the file to its medium and closes it; after that, position() still
// works and flush() does nothing. The file is never shortened: data after the last position stays. Each chunk is a
// point of interruption. One thread at a time.
//
// Failures of the system throw FileSinkIOException, a full disk FileSinkNotEnoughSpaceException. The position then
// stays, the file holds an unknown part of the chunk, and the same chunk may be written again in its place. A failure
// may also lose earlier chunks that were only buffered: until they are written again from where the loss begins, the
// end of data and every flush fail. A file that cannot be brought to its medium throws GenericException.
class FileSink : public IStorageSink,
                 public TransactionalSeekable<ISeekableSink>,
                 public Utils::IDebugName,
                 private boost::noncopyable {
public:
    // With `truncate` the file is emptied when it is opened; without it, writing goes on after what the file holds.
    FileSink(const boost::filesystem::path& path, bool truncate);

    // Writes behind what an open file holds; the path is for messages alone. Whoever has to be sure of which file it is
    // opens it first.
    FileSink(const boost::filesystem::path& path, Utils::FileDescriptor file);
    ~FileSink() override;

    void writeChunk(const std::uint8_t* data, std::size_t size) override;
    void markEndOfData() final;
    bool endOfDataMarked() override { return m_endOfDataMarked; }
    streamsize_t position() override;
    void seek(streamsize_t position) override;
    void open() override;
    void close() final;
    bool isOpened() override { return m_opened; }

    // Does nothing after the end of data.
    void flush() final;
    bool alreadyClosed() override { return m_closed; }

    // Restores the position and keeps the data that was saved. It is an assertion failure on an opened file.
    void transactionLoad(IStoreTransaction* transaction) override;

    std::string debugName() const override;

private:
    std::FILE* openFile();
    const char* mode() const;
    void finishFile();
    bool tryMoveTo(streamsize_t position); // false: errno says why
    void noteFailure(int errnoValue);
    FileSinkIOException failure(int errnoValue) const;

    const std::string m_path;
    bool m_truncate;
    Utils::FileDescriptor m_given; // until it is opened
    std::FILE* m_file = nullptr;   // null behind the end of data too
    streamsize_t m_position = 0;
    bool m_opened = false;
    bool m_endOfDataMarked = false;
    bool m_closed = false;
    bool m_astray = false;                    // the file's own position may differ from m_position
    boost::optional<streamsize_t> m_lostFrom; // where the data begins that was accepted and never reached the file
    int m_failure = 0;                        // the errno value of that failure
};

} // namespace DAX::Common::IO
