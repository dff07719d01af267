#pragma once

#include <string>

#include <boost/assert/source_location.hpp>
#include <boost/core/noncopyable.hpp>
#include <boost/filesystem/path.hpp>

#include "Utility/Utils/FileDescriptor.h"

namespace DAX::Common::IO {

// A new content for a file, in one step: readers, and whoever comes after a power cut, find the whole old content or
// the whole new one. The new file is written beside the old one as PATH.new, and takes its place, mode and owner; what
// a power cut left under that name goes. The new file is never written through a link, into a pipe or to a device. What
// stands at PATH itself and is no regular file, such as a link or a pipe, is replaced; a folder is refused. Without a
// commit the old file stays, and no new one is left.
//
// Failures throw FileSinkIOException, FileSinkNotEnoughSpaceException when the disk is full, or GenericException when
// the medium cannot be reached. One at a time for a file; belongs to one thread.
class FileReplacement : private boost::noncopyable {
public:
    // Opens the new file. A file that the process may not write, and a folder, are refused.
    explicit FileReplacement(const boost::filesystem::path& path);
    ~FileReplacement();

    void write(const std::string& text);

    // The new file is on its medium, under its name, when this returns. Nothing comes behind it. When it throws, the
    // old file stays; but when only the folder cannot be synchronized, the new content is in place already, and a power
    // cut may take it back.
    void commit();

private:
    void open();
    void takeOver(unsigned int mode, unsigned int owner, unsigned int group) const;
    [[noreturn]] void fail(const boost::source_location& site, int errnoValue, const std::string& path,
                           const char* description) const;

    const std::string m_path;
    const std::string m_newPath;
    Utils::FileDescriptor m_descriptor;
    bool m_made = false; // the new file is there, under its own name
};

} // namespace DAX::Common::IO
