#include "Common/IO/FileStream.h"

#include <cerrno>

#include <boost/exception/diagnostic_information.hpp>
#include <boost/thread/thread.hpp>

#include "Common/Logging/LoggingStream.h"

namespace DAX::Common::IO {

using IOExceptions::OutOfRangeException;
using Utils::errinfo_description;
using Utils::errinfo_path;
using Utils::errinfo_subject;

FileStream::FileStream(const boost::filesystem::path& path) : m_path(path.string()) {}

FileStream::~FileStream() {
    try {
        if (m_opened) {
            FileStream::close();
        }
    } catch (...) {
        DAX_LOG(ERR) << "Exception caught in ~FileStream. Ignoring: "
                     << boost::current_exception_diagnostic_information(true);
    }
}

void FileStream::setFileName(const boost::filesystem::path& path) {
    throwIfOpened();
    m_path = path.string();
}

void FileStream::open() {
    throwIfOpened();
    throwIfAlreadyClosed();
    m_file = ::fopen64(m_path.c_str(), "rbe"); // "e": not for a program that is started meanwhile
    if (m_file == nullptr) {
        DAX_THROW(FileStreamIOException(errno), errinfo_path(m_path));
    }
    m_opened = true;
    m_size = measure();
    m_position = 0;
}

streamsize_t FileStream::measure() {
    if (::fseeko64(m_file, 0, SEEK_END) != 0) {
        DAX_THROW(failure(errno), errinfo_description("Seeking to end of file failed."));
    }
    const off64_t end = ::ftello64(m_file);
    if (end < 0) {
        DAX_THROW(failure(errno), errinfo_description("Getting file size failed."));
    }
    if (::fseeko64(m_file, 0, SEEK_SET) != 0) {
        DAX_THROW(failure(errno), errinfo_description("Seeking to beginning of file failed."));
    }
    return static_cast<streamsize_t>(end);
}

std::size_t FileStream::readChunk(std::uint8_t* data, std::size_t size) {
    openIfNotOpened();
    boost::this_thread::interruption_point();
    if (m_astray && !tryMoveTo(m_position)) {
        DAX_THROW(failure(errno), errinfo_description("Seeking file failed."));
    }
    m_astray = true; // until the read has succeeded
    const std::size_t bytesRead = std::fread(data, 1, size, m_file);
    if (bytesRead < size && std::ferror(m_file) != 0) {
        DAX_THROW(failure(errno), errinfo_description("Reading from file failed."));
    }
    // The file has grown since it was opened, so its content cannot be trusted.
    if (bytesRead > m_size - m_position) {
        DAX_THROW(failure(0), errinfo_description("File is manipulated by someone after file open."));
    }
    m_position += bytesRead;
    m_astray = false;
    return bytesRead;
}

bool FileStream::atEnd() {
    openIfNotOpened();
    return m_position == m_size;
}

streamsize_t FileStream::position() {
    openIfNotOpened();
    return m_position;
}

streamsize_t FileStream::size() {
    openIfNotOpened();
    return m_size;
}

void FileStream::seek(streamsize_t position) {
    openIfNotOpened();
    if (position == m_position && !m_astray) {
        return;
    }
    if (position > m_size) {
        DAX_THROW(OutOfRangeException(), errinfo_subject(debugName()) << "Position " << position
                                                                      << " is past end of file. File size: " << m_size);
    }
    if (!tryMoveTo(position)) {
        DAX_THROW(failure(errno), errinfo_description("Seeking file failed."));
    }
}

bool FileStream::tryMoveTo(streamsize_t position) {
    m_astray = ::fseeko64(m_file, static_cast<off64_t>(position), SEEK_SET) != 0;
    if (m_astray) {
        return false;
    }
    std::clearerr(m_file); // seeking does not clear the error flag of a failed read
    m_position = position;
    return true;
}

void FileStream::close() {
    throwIfAlreadyClosed();
    throwIfNotOpened();
    m_opened = false;
    m_closed = true;
    BOOST_ASSERT(m_file);
    if (std::fclose(m_file) != 0) {
        DAX_THROW(failure(errno), errinfo_description("Closing file failed."));
    }
}

std::string FileStream::debugName() const {
    return "FileStream(" + m_path + ")";
}

FileStreamIOException FileStream::failure(int errnoValue) const {
    FileStreamIOException exception(errnoValue);
    exception << errinfo_path(m_path);
    return exception;
}

} // namespace DAX::Common::IO
