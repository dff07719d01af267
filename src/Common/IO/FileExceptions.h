#pragma once

#include "Common/IO/IOExceptions.h"

namespace DAX::Common::IO {

// A file cannot be opened, read or closed. errinfo_path says which file, errinfo_description (unless it was the
// opening) what failed, and the streamed text holds the errno value.
class FileStreamIOException : public IOExceptions::IOStreamsException {
public:
    explicit FileStreamIOException(int errnoValue);
};

// The same for a file that is written.
class FileSinkIOException : public IOExceptions::IOStreamsException {
public:
    explicit FileSinkIOException(int errnoValue);
};

// The disk is full.
class FileSinkNotEnoughSpaceException : public FileSinkIOException {
public:
    using FileSinkIOException::FileSinkIOException;
};

} // namespace DAX::Common::IO
