#pragma once

#include <cstdio>
#include <string>

#include <boost/core/noncopyable.hpp>
#include <boost/filesystem/path.hpp>

#include "Common/IO/FileExceptions.h"
#include "Common/IO/IStream.h"
#include "Common/IO/TransactionalSeekable.h"
#include "Utility/Utils/IDebugName.h"

namespace DAX::Common::IO {

// A file to read. Its length is measured when it is opened: a file that grows under the reader can no longer be
// trusted, and a read beyond that length throws. Each chunk is a point of interruption. Failures of the system throw
// FileStreamIOException; the position then stays, and the next read begins there. One thread at a time.
class FileStream : public IStorageStream,
                   public TransactionalSeekable<ISeekableStream>,
                   public Utils::IDebugName,
                   private boost::noncopyable {
public:
    explicit FileStream(const boost::filesystem::path& path);
    ~FileStream() override;

    // Only before the file is opened; throws AlreadyOpenedException afterwards.
    void setFileName(const boost::filesystem::path& path);

    std::size_t readChunk(std::uint8_t* data, std::size_t size) override;
    bool atEnd() override;
    streamsize_t position() override;
    void seek(streamsize_t position) override;
    streamsize_t size() override;
    void open() override;
    void close() override;
    bool isOpened() override { return m_opened; }
    bool alreadyClosed() override { return m_closed; }

    std::string debugName() const override;

private:
    streamsize_t measure();
    bool tryMoveTo(streamsize_t position); // false: errno says why
    FileStreamIOException failure(int errnoValue) const;

    std::string m_path;
    std::FILE* m_file = nullptr;
    streamsize_t m_size = 0;
    streamsize_t m_position = 0;
    bool m_opened = false;
    bool m_closed = false;
    bool m_astray = false; // the file's own position may differ from m_position
};

} // namespace DAX::Common::IO
