#include "ServiceInterface/InstallationState.h"

#include "Common/IO/ChecksumedStream.h"
#include "Common/IO/FileStream.h"
#include "Common/Logging/LoggingStream.h"
#include "ServiceInterface/Implementation/InstallationRecord.h"
#include "Utility/Utils/ErrInfoStream.h"
#include "Utility/Utils/GenericException.h"

namespace DAX::Service::ServiceCommon {

using Common::IO::ChecksumedStream;
using Common::IO::FileStream;
using Common::Utils::errinfo_description;
using Common::Utils::errinfo_path;
using Common::Utils::GenericException;

void saveInstallationState(const std::string& path, const std::string& info) {
    writeInstallationRecord(path, info);
    ChecksumedStream stream(std::make_shared<FileStream>(path));
    if (!stream.openCheck()) { // the checksum alone decides: the text is not compared
        DAX_THROW(GenericException(), errinfo_description("InstallationState verification failed.")
                                          << errinfo_path(path));
    }
    DAX_LOG(INF) << "Upgrade info: " << info;
    DAX_LOG(INF) << "Upgrade info saved in file: " << path;
}

} // namespace DAX::Service::ServiceCommon
