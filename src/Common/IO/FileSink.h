#pragma once

#include <cstdio>
#include <string>

#include <boost/core/noncopyable.hpp>
#include <boost/filesystem/path.hpp>
#include <boost/optional.hpp>

#include "Common/IO/FileExceptions.h"
#include "Common/IO/ISink.h"
#include "Common/IO/TransactionalSeekable.h"
#include "Utility/Utils/IDebugName.h"

namespace DAX::Common::IO {

// A file to write. The end of data takes it to its medium and closes it, whatever is asked of the object afterwards.
// Nothing is cut: what stood behind the last position stays. Each chunk is a point of interruption. Failures of the
// system throw FileSinkIOException, a full disk FileSinkNotEnoughSpaceException; the position then stays, the file
// holds an unknown part of the chunk, and the same chunk, written again, takes its place. Earlier chunks that were only
// buffered may be lost with a failure: until they are written again from where the loss begins, the end of data and
// every flush fail. A file that does not reach its medium throws GenericException.
class FileSink : public IStorageSink,
                 public TransactionalSeekable<ISeekableSink>,
                 public Utils::IDebugName,
                 private boost::noncopyable {
public:
    // The file is emptied when it is opened; without `truncate` writing goes on behind what it holds.
    FileSink(const boost::filesystem::path& path, bool truncate);
    ~FileSink() override;

    void writeChunk(const std::uint8_t* data, std::size_t size) override;
    void markEndOfData() override;
    bool endOfDataMarked() override { return m_endOfDataMarked; }
    streamsize_t position() override;
    void seek(streamsize_t position) override;
    void open() override;
    void close() override;
    bool isOpened() override { return m_opened; }

    // Nothing is left to do behind the end of data.
    void flush() override;
    bool alreadyClosed() override { return m_closed; }

    // The data that was saved stays in the file. On an opened file an assertion fails.
    void transactionLoad(IStoreTransaction* transaction) override;

    std::string debugName() const override;

private:
    const char* mode() const;
    void finishFile();
    bool tryMoveTo(streamsize_t position); // false: errno says why
    void noteFailure(int errnoValue);
    FileSinkIOException failure(int errnoValue) const;

    const std::string m_path;
    bool m_truncate;
    std::FILE* m_file = nullptr; // null behind the end of data too
    streamsize_t m_position = 0;
    bool m_opened = false;
    bool m_endOfDataMarked = false;
    bool m_closed = false;
    bool m_astray = false;                    // the file may stand elsewhere than at m_position
    boost::optional<streamsize_t> m_lostFrom; // where data begins that was taken and never reached the file
    int m_failure = 0;                        // the errno value of the failure that left it so
};

} // namespace DAX::Common::IO
