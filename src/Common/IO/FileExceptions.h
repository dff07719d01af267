#pragma once

#include "Common/IO/IOExceptions.h"

namespace DAX::Common::IO {

// What went wrong with a file: errinfo_path says which, errinfo_description what, and the streamed text holds the errno
// value.
class FileStreamIOException : public IOExceptions::IOStreamsException {
public:
    explicit FileStreamIOException(int errnoValue);
};

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
