#include "Common/IO/FileExceptions.h"

#include "Utility/Utils/ErrorTags.h"

namespace DAX::Common::IO {

FileStreamIOException::FileStreamIOException(int errnoValue) {
    *this << Utils::errinfo_errno(errnoValue);
}

FileSinkIOException::FileSinkIOException(int errnoValue) {
    *this << Utils::errinfo_errno(errnoValue);
}

} // namespace DAX::Common::IO
