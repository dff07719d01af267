#include "ServiceInterface/InstallationState.h"

#include "Common/Logging/LoggingStream.h"
#include "ServiceInterface/Implementation/ChecksummedFile.h"
#include "Utility/Utils/ErrInfoStream.h"
#include "Utility/Utils/GenericException.h"

namespace DAX {
namespace Service {
namespace ServiceCommon {

using Common::Utils::errinfo_description;
using Common::Utils::errinfo_path;
using Common::Utils::GenericException;

namespace {

std::string record(const std::string& info) {
    return littleEndian32(info.size()) + info;
}

} // namespace

void saveInstallationState(std::string path, std::string info) {
    writeChecksummedFile(path, record(info));
    if (!isChecksummedFileIntact(path)) {
        DAX_THROW(GenericException(), errinfo_description("InstallationState verification failed.")
                                          << errinfo_path(path));
    }
    DAX_LOG(INF) << "Upgrade info: " << info;
    DAX_LOG(INF) << "Upgrade info saved in file: " << path;
}

} // namespace ServiceCommon
} // namespace Service
} // namespace DAX
