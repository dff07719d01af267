#pragma once

#include <string>

#include <boost/assert/source_location.hpp>
#include <boost/core/noncopyable.hpp>
#include <boost/filesystem/path.hpp>

#include "Utility/Utils/FileDescriptor.h"

namespace DAX::Common::IO {

// Replaces the content of a file in one step: readers, and whoever comes after a power cut, find the whole old content
// or the whole new one. The new file is written beside the old one as PATH.new, and takes its place, mode and owner; a
// file that a power cut left under that name is removed first. The new file is never written through a link, into a
// pipe or to a device. If PATH itself is no regular file, such as a link or a pipe, it is replaced; a folder is
// refused. Without a commit the old file stays, and no new one is left.
//
// Failures throw FileSinkIOException, FileSinkNotEnoughSpaceException when the disk is full, or GenericException when
// the data cannot be brought to the medium. Only one replacement of a file at a time; belongs to one thread.
class FileReplacement : private boost::noncopyable {
public:
    // Opens the new file. A file that the process may not write, and a folder, are refused.
    explicit FileReplacement(const boost::filesystem::path& path);
    ~FileReplacement();

    // Appends to the new file. May be called several times, before the commit.
    void write(const std::string& text);

    // When this returns, the new file is on its medium, under its name; it may not be used any more. When it throws,
    // the old file stays. There is one exception: when only the folder cannot be synchronized, the new content is in
    // place already, and a power cut may take it back.
    void commit();

private:
    void open();
    void takeOver(unsigned int mode, unsigned int owner, unsigned int group) const;
    [[noreturn]] void fail(const boost::source_location& site, int errnoValue, const std::string& path,
                           const char* description) const;

    const std::string m_path;
    const std::string m_newPath;
    Utils::FileDescriptor m_descriptor;
    bool m_made = false; // the new file exists, under its own name
};

} // namespace DAX::Common::IO
