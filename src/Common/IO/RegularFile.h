#pragma once

#include <cstddef>
#include <string>

#include <boost/assert/source_location.hpp>
#include <boost/core/noncopyable.hpp>
#include <boost/filesystem/path.hpp>

#include "Utility/Utils/FileDescriptor.h"

namespace DAX::Common::IO {

// A file to read that somebody else may have laid down, as on a stick. Nothing that stands in its place holds the
// reader up or fills the memory: a pipe, a device, a folder or too long a file is refused. Failures throw
// FileStreamIOException, with the errno value 0 when it is not the system that refuses. Belongs to one thread.
class RegularFile : private boost::noncopyable {
public:
    enum Access { FOR_READING, FOR_READING_AND_WRITING };
    enum Links { REFUSED, FOLLOWED }; // a symbolic link in the file's own place; those above it are followed

    // Opens the file. The access is what the caller must have; nothing is written.
    explicit RegularFile(const boost::filesystem::path& path, Access access = FOR_READING, Links links = REFUSED);

    // All that is left. A file of more than `limit` bytes, and one that grows meanwhile, is refused.
    std::string readText(std::size_t limit);

private:
    void throwUnlessRegular(unsigned int mode) const;
    [[noreturn]] void fail(const boost::source_location& site, int errnoValue, const std::string& description) const;

    const std::string m_path;
    Utils::FileDescriptor m_descriptor;
    std::size_t m_size = 0; // when it was opened
};

} // namespace DAX::Common::IO
