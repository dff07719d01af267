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

boost::optional<std::string> loadInstallationState(const std::string& path) {
    const auto file = std::make_shared<FileStream>(path);
    file->open(); // to the check, a file that cannot be opened is one without a trailer
    ChecksumedStream stream(file);
    try {
        stream.open();
    } catch (const Common::IO::IOExceptions::ChecksumedStreamDataCorrupted&) {
        return boost::none;
    }
    return readInstallationRecord(stream);
}

} // namespace DAX::Service::ServiceCommon
