#include <cerrno>
#include <fstream>

#include <boost/exception/errinfo_errno.hpp>
#include <boost/filesystem/operations.hpp>

#include "Common/Logging/LoggingStream.h"
#include "Common/PlatformDependent/Sync.h"
#include "Platform/ProductPaths/IProductPaths.h"
#include "Platform/SystemAPI/SystemControlSystemAPI/Implementation/CSystemControl.h"
#include "Utility/Utils/ErrInfoStream.h"
#include "Utility/Utils/GenericException.h"

namespace DAX::Platform {
namespace {

using boost::filesystem::path;
using Common::Utils::errinfo_path;
using Common::Utils::GenericException;

// The file by which this stack asks for standalone mode.
const path& m_getStandaloneFlagPath() {
    static const path flag = IProductPaths::getDAXPartitionPath() / "STANDALONE";
    return flag;
}

// The file that the boot scripts keep while the device is in standalone mode.
path standaloneStatePath() {
    return IProductPaths::getFileSystemRootPath() / "/run/.standalone";
}

// Returns the errno value of the failure, 0 without one.
int writeStandaloneRequest() {
    errno = 0;
    std::ofstream file(m_getStandaloneFlagPath().string());
    if (file) {
        file << "standalone\n";
        file.close();
        const int failure = file ? 0 : errno;
        Common::PlatformDependent::system_sync();
        return failure;
    }
    return errno;
}

} // namespace

bool CSystemControl::m_isInStandaloneMode() {
    if (exists(standaloneStatePath())) {
        return true;
    }
    if (exists(m_getStandaloneFlagPath())) {
        DAX_LOG(INF) << "STANDALONE flag file already exists, but we are not in standalone mode yet.";
    }
    return false;
}

void CSystemControl::m_requestStandaloneMode() {
    if (exists(m_getStandaloneFlagPath())) {
        DAX_LOG(INF) << "STANDALONE flag file already exists.";
        return;
    }
    const int failure = writeStandaloneRequest();
    if (!exists(m_getStandaloneFlagPath())) {
        DAX_THROW(GenericException(), "Error during creating file." << errinfo_path(m_getStandaloneFlagPath())
                                                                    << boost::errinfo_errno(failure));
    }
    DAX_LOG(FTL) << "Successfully requested STANDALONE mode.";
}

bool CSystemControl::m_wasStandaloneModeRequested() {
    return exists(m_getStandaloneFlagPath());
}

void CSystemControl::m_quitStandaloneMode() {
    if (exists(m_getStandaloneFlagPath())) {
        remove(m_getStandaloneFlagPath());
    } else {
        DAX_LOG(INF) << "STANDALONE flag file doesnt exists.";
    }
}

} // namespace DAX::Platform
