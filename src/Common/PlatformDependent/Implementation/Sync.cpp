#include "Common/PlatformDependent/Sync.h"

#include <cerrno>

#include <unistd.h>

#include "Common/Logging/LoggingStream.h"
#include "Utility/Utils/ErrInfoStream.h"
#include "Utility/Utils/GenericException.h"

namespace DAX {
namespace Common {
namespace PlatformDependent {

using Utils::errinfo_errno;
using Utils::GenericException;

void file_sync(int fd) {
    if (::fsync(fd) != 0) {
        DAX_THROW(GenericException(), errinfo_errno(errno));
    }
}

void system_sync() {
    DAX_LOG(INF) << "Performing 'sync'.";
    ::sync();
}

} // namespace PlatformDependent
} // namespace Common
} // namespace DAX
