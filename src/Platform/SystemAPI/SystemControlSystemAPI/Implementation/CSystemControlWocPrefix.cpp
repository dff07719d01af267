#include <string>

#include <boost/exception/diagnostic_information.hpp>
#include <boost/filesystem/operations.hpp>

#include "Common/IO/FileStream.h"
#include "Common/IO/IOExceptions.h"
#include "Common/Logging/LoggingStream.h"
#include "Platform/ProductPaths/IProductPaths.h"
#include "Platform/SystemAPI/SystemControlSystemAPI/Implementation/CSystemControl.h"
#include "Utility/Utils/ErrInfoStream.h"
#include "Utility/Utils/GenericException.h"

namespace DAX::Platform {
namespace {

using boost::filesystem::path;
using Common::Utils::errinfo_description;
using Common::Utils::GenericException;

path wocKeyPrefixPath() {
    return IProductPaths::getFileSystemRootPath() / "/usr/share/org.kovan.tv.dax/woc" / "WocKeyPrefix.txt";
}

} // namespace

std::string CSystemControl::m_getWocOTNModelPrefix() {
    const path file = wocKeyPrefixPath();
    if (!exists(file)) {
        DAX_THROW(GenericException(), "WOC OTN Model prefix file does not exist: " << file.string());
    }
    try {
        Common::IO::FileStream stream(file);
        stream.open();
        std::string prefix = stream.readAllText(Common::IO::SMALL_CHUNK_SIZE);
        DAX_LOG(INF) << "Returning WOC OTN Model prefix: " << prefix;
        return prefix;
    } catch (const Common::IO::IOExceptions::IOStreamsException&) {
        DAX_LOG(ERR) << boost::current_exception_diagnostic_information(true);
        DAX_THROW(GenericException(), errinfo_description("Error when reading WOC OTN Model prefix from file."));
    }
}

} // namespace DAX::Platform
