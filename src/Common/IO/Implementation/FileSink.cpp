#include "Common/IO/FileSink.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include <boost/exception/diagnostic_information.hpp>
#include <boost/filesystem/operations.hpp>
#include <boost/thread/thread.hpp>

#include "Common/Logging/LoggingStream.h"
#include "Common/PlatformDependent/Sync.h"
#include "Utility/Utils/GenericException.h"

namespace DAX::Common::IO {

using Utils::errinfo_description;
using Utils::errinfo_path;
using Utils::GenericException;

FileSink::FileSink(const boost::filesystem::path& path, bool truncate) : m_path(path.string()), m_truncate(truncate) {}

FileSink::FileSink(const boost::filesystem::path& path, Utils::FileDescriptor file)
    : m_path(path.string()), m_truncate(false), m_given(std::move(file)) {}

FileSink::~FileSink() {
    try {
        if (m_opened) {
            FileSink::close();
        }
    } catch (...) {
        DAX_LOG(ERR) << "Exception caught in ~FileSink. Ignoring: "
                     << boost::current_exception_diagnostic_information(true);
    }
    if (m_file != nullptr) { // marking the end of data failed
        std::fclose(m_file);
    }
}

// A program that this one starts meanwhile gets no file of it: "e" sets O_CLOEXEC.
std::FILE* FileSink::openFile() {
    if (!m_given.isOpen()) {
        return ::fopen64(m_path.c_str(), mode());
    }
    std::FILE* const file = ::fdopen(m_given.get(), "wb");
    if (file != nullptr) {
        m_given.release();
    }
    return file;
}

const char* FileSink::mode() const {
    if (m_truncate) {
        return "wbe";
    }
    boost::system::error_code ignored; // if the file cannot be examined, fopen fails, too; it must not be emptied
    const bool missing = boost::filesystem::status(m_path, ignored).type() == boost::filesystem::file_not_found;
    return missing ? "wbe" : "rb+e";
}

void FileSink::open() {
    throwIfOpened();
    throwIfAlreadyClosed();
    m_file = openFile();
    if (m_file == nullptr) {
        DAX_THROW(FileSinkIOException(errno), errinfo_path(m_path));
    }
    m_opened = true;
    if (::fseeko64(m_file, 0, SEEK_END) != 0) {
        DAX_THROW(failure(errno), errinfo_description("Seeking to end of file failed."));
    }
    const off64_t end = ::ftello64(m_file);
    if (end < 0) {
        DAX_THROW(failure(errno), errinfo_description("Getting file size failed."));
    }
    m_position = static_cast<streamsize_t>(end);
    if (m_endOfDataMarked) {
        // It was marked before it was opened: mark it again, which closes the file.
        m_endOfDataMarked = false;
        markEndOfData();
    }
}

void FileSink::writeChunk(const std::uint8_t* data, std::size_t size) {
    openIfNotOpened();
    throwIfEndOfDataMarked();
    boost::this_thread::interruption_point();
    if (m_astray && !tryMoveTo(m_position)) {
        DAX_THROW(failure(errno), errinfo_description("Seeking file failed."));
    }
    if (size == 0 || std::fwrite(data, 1, size, m_file) == size) { // fwrite of no data returns 0 without a failure
        m_position += size;
        return;
    }
    const int errnoValue = errno;
    noteFailure(errnoValue);
    if (errnoValue == ENOSPC) {
        DAX_THROW(FileSinkNotEnoughSpaceException(errnoValue), errinfo_path(m_path)
                                                                   << errinfo_description("No space left on device."));
    }
    DAX_THROW(failure(errnoValue), errinfo_description("Writing to file failed."));
}

void FileSink::flush() {
    openIfNotOpened();
    if (m_file == nullptr) {
        return;
    }
    if (std::fflush(m_file) != 0) {
        noteFailure(errno);
        DAX_THROW(failure(m_failure), errinfo_description("Flushing file failed."));
    }
    if (m_lostFrom) { // the C library dropped the data, so that fflush has nothing to complain about
        DAX_THROW(failure(m_failure), errinfo_description("Flushing file failed."));
    }
    const int descriptor = ::fileno(m_file);
    if (descriptor < 0) {
        DAX_THROW(failure(errno), errinfo_description("Getting file descriptor failed."));
    }
    try {
        PlatformDependent::file_sync(descriptor);
    } catch (const std::exception&) {
        DAX_THROW(GenericException(), "sync() failed.");
    }
}

void FileSink::markEndOfData() {
    throwIfEndOfDataMarked();
    throwIfAlreadyClosed();
    try {
        if (m_opened) {
            finishFile();
        }
    } catch (...) {
        m_endOfDataMarked = true;
        throw;
    }
    m_endOfDataMarked = true;
}

void FileSink::finishFile() {
    flush();
    if (std::fclose(std::exchange(m_file, nullptr)) != 0) {
        DAX_THROW(failure(errno), errinfo_description("Closing file failed."));
    }
}

streamsize_t FileSink::position() {
    openIfNotOpened();
    return m_position;
}

void FileSink::seek(streamsize_t position) {
    openIfNotOpened();
    throwIfEndOfDataMarked();
    if (position == m_position && !m_astray) {
        return;
    }
    if (!tryMoveTo(position)) {
        DAX_THROW(failure(errno), errinfo_description("Seeking file failed."));
    }
}

bool FileSink::tryMoveTo(streamsize_t position) {
    if (::fseeko64(m_file, static_cast<off64_t>(position), SEEK_SET) != 0) {
        const int errnoValue = errno;
        noteFailure(errnoValue);
        errno = errnoValue;
        return false;
    }
    m_position = position;
    m_astray = false;
    if (m_lostFrom && position <= *m_lostFrom) {
        m_lostFrom = boost::none;
    }
    return true;
}

void FileSink::noteFailure(int errnoValue) {
    m_astray = true;
    // The C library may drop what it buffered when a write fails: data after what the file has reached counts as lost.
    const off64_t reached = ::ftello64(m_file);
    const streamsize_t safe = reached < 0 ? 0 : static_cast<streamsize_t>(reached);
    if (safe < m_position) {
        m_lostFrom = std::min(safe, m_lostFrom.value_or(safe));
    }
    m_failure = errnoValue;
}

void FileSink::close() {
    throwIfAlreadyClosed();
    throwIfNotOpened();
    if (!m_endOfDataMarked) {
        markEndOfData();
    }
    m_opened = false;
    m_closed = true;
}

void FileSink::transactionLoad(IStoreTransaction* transaction) {
    BOOST_ASSERT(!isOpened());
    m_truncate = false;
    TransactionalSeekable<ISeekableSink>::transactionLoad(transaction);
}

std::string FileSink::debugName() const {
    return "FileSink(" + m_path + ")";
}

FileSinkIOException FileSink::failure(int errnoValue) const {
    FileSinkIOException exception(errnoValue);
    exception << errinfo_path(m_path);
    return exception;
}

} // namespace DAX::Common::IO
