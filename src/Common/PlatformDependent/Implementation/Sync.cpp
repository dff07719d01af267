#include "Common/PlatformDependent/Sync.h"

#include <cerrno>

#include <fcntl.h>
#include <unistd.h>

#include "Common/Logging/LoggingStream.h"
#include "Utility/Utils/ErrInfoStream.h"
#include "Utility/Utils/FileDescriptor.h"
#include "Utility/Utils/GenericException.h"

namespace DAX::Common::PlatformDependent {

using Utils::errinfo_errno;
using Utils::errinfo_path;
using Utils::GenericException;

void file_sync(int fd) {
    if (::fsync(fd) != 0) {
        DAX_THROW(GenericException(), errinfo_errno(errno));
    }
}

void folder_sync(const std::string& folder) {
    const std::string path = folder.empty() ? "." : folder;
    const Utils::FileDescriptor descriptor(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    // EINVAL: the file system has no way to synchronize a folder.
    const bool synced = descriptor.isOpen() && (::fsync(descriptor.get()) == 0 || errno == EINVAL);
    if (!synced) {
        DAX_THROW(GenericException(), errinfo_errno(errno) << errinfo_path(path));
    }
}

void system_sync() {
    DAX_LOG(INF) << "Performing 'sync'.";
    ::sync();
}

} // namespace DAX::Common::PlatformDependent
