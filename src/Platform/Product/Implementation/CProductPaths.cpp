#include "Platform/Product/IProductPaths.h"

#include "Platform/Product/Implementation/FileSystemRoot.h"

namespace DAX {
namespace Platform {
namespace {

const char READ_WRITE_SYSTEM_PARTITION[] = "/mnt/systemrw";
const char DATA_SUFFIX[] = "/org.kovan.tv.dax/data/tv";

boost::filesystem::path partition() {
    return boost::filesystem::path(fileSystemRoot()) / READ_WRITE_SYSTEM_PARTITION / DATA_SUFFIX;
}

} // namespace

boost::filesystem::path IProductPaths::getDAXPartitionPath() {
    return partition();
}

boost::filesystem::path IProductPaths::getLastSearchingDateFilePath() {
    return partition() / "LastSearchingDate";
}

boost::filesystem::path IProductPaths::getInstallationLockPath() {
    return partition() / "InstallationLock.dat";
}

} // namespace Platform
} // namespace DAX
