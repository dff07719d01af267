#include <string>
#include <vector>

#include <boost/filesystem/operations.hpp>

#include "Common/IO/FlagFile.h"
#include "Common/Logging/LoggingStream.h"
#include "Platform/Product/IProductInfo.h"
#include "Platform/ProductPaths/IProductPaths.h"

namespace DAX::Platform {
namespace {

using boost::filesystem::path;

const std::vector<std::string> NOT_GENUINE_FLAG_LINES = {
    "This flag file means that the last BDiff upgrade failed because source partitions' CRCs on device and in the "
    "BDiff didn't match.",
    "It could be caused by manual changes to the source partition on the device.", "Next upgrade should be full."};

} // namespace

bool IProductInfo::isInstallationLocked() {
    return exists(IProductPaths::getInstallationLockPath());
}

void IProductInfo::releaseInstallationLock() {
    const path lock = IProductPaths::getInstallationLockPath();
    if (!Common::IO::removeFlagFile(lock)) {
        DAX_LOG(WRN) << "InstallationLock was not locked (checked for file:  " << lock.string() << ")";
    }
}

bool IProductInfo::isSourcePartitionNotGenuine() {
    return exists(IProductPaths::getSourcePartitionNotGenuineFlagPath());
}

void IProductInfo::setSourcePartitionNotGenuineFlag() {
    DAX_LOG(INF) << "Setting DAX SourcePartitionNotGenuine flag.";
    if (!isSourcePartitionNotGenuine()) {
        Common::IO::writeFlagFile(IProductPaths::getSourcePartitionNotGenuineFlagPath(), NOT_GENUINE_FLAG_LINES);
    }
}

void IProductInfo::releaseSourcePartitionNotGenuineFlag() {
    DAX_LOG(INF) << "Releasing SourcePartitionNotGenuine flag.";
    Common::IO::removeFlagFile(IProductPaths::getSourcePartitionNotGenuineFlagPath());
}

} // namespace DAX::Platform
