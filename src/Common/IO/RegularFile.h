#pragma once

#include <cstddef>
#include <string>

#include <boost/assert/source_location.hpp>
#include <boost/core/noncopyable.hpp>
#include <boost/filesystem/path.hpp>

#include "Utility/Utils/FileDescriptor.h"

namespace DAX::Common::IO {

// Reads a file that somebody else may have put there, as on a stick. Nothing in its place can block the reader or fill
// the memory: a pipe, a device, a folder and a file that is too long are refused. Failures throw FileStreamIOException,
// whose errno value is 0 when the system did not refuse. Belongs to one thread.
class RegularFile : private boost::noncopyable {
public:
    enum Access { FOR_READING, FOR_READING_AND_WRITING };
    enum Links { REFUSED, FOLLOWED }; // for a symbolic link at the path itself; those in its folders are followed

    // Opens the file. The caller must have this access to it; nothing is written.
    explicit RegularFile(const boost::filesystem::path& path, Access access = FOR_READING, Links links = REFUSED);

    // The content from where the last read ended. Refuses a file of more than `limit` bytes, and one that has grown
    // since it was opened.
    std::string readText(std::size_t limit);

private:
    void throwUnlessRegular(unsigned int mode) const;
    [[noreturn]] void fail(const boost::source_location& site, int errnoValue, const std::string& description) const;

    const std::string m_path;
    Utils::FileDescriptor m_descriptor;
    std::size_t m_size = 0; // when it was opened
};

} // namespace DAX::Common::IO
