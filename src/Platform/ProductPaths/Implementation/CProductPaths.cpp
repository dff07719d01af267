#include "Platform/ProductPaths/Implementation/CProductPaths.h"

#include <stdexcept>
#include <utility>

#include <boost/filesystem/operations.hpp>
#include <kvplatform.h>

namespace DAX::Platform {
namespace {

using boost::filesystem::path;

// The result of the first call from this place: each lambda has a type, and so a static, of its own.
template <class Compute>
auto cached(Compute compute) {
    static const auto result = compute();
    return result;
}

std::string directory(int number) {
    const char* const text = kvplatform_getenv(number);
    if (text == nullptr) { // not DAX_THROW: callers know the exception that std::string used to throw for null
        throw std::logic_error("The platform has no directory " + std::to_string(number));
    }
    return text;
}

bool isUpgradeLog(const boost::filesystem::directory_entry& entry) {
    static const std::string PREFIX = "upgrade-";
    static const std::string SUFFIX = ".log";
    const std::string name = entry.path().filename().string();
    return entry.symlink_status().type() == boost::filesystem::regular_file &&
           name.size() >= PREFIX.size() + SUFFIX.size() && name.compare(0, PREFIX.size(), PREFIX) == 0 &&
           name.compare(name.size() - SUFFIX.size(), SUFFIX.size(), SUFFIX) == 0;
}

std::vector<path> upgradeLogsIn(const path& directory) {
    std::vector<path> logs;
    if (!boost::filesystem::exists(directory)) {
        return logs;
    }
    for (const auto& entry : boost::filesystem::directory_iterator(directory)) {
        if (isUpgradeLog(entry)) {
            logs.push_back(entry.path());
        }
    }
    return logs;
}

} // namespace

CProductPaths::CProductPaths() : CProductPaths("") {}

CProductPaths::CProductPaths(std::string root)
    : m_root(std::move(root))
    , m_appsDirectory(directory(KVPLATFORM_APPS))
    , m_bigTemporaryStorage(directory(KVPLATFORM_BIG_TEMPORARY_STORAGE))
    , m_binariesDirectory(directory(KVPLATFORM_BINARIES))
    , m_sharedDataDirectory(directory(KVPLATFORM_SHARED_DATA))
    , m_systemPartition("/mnt/systemrw")
    , m_usbMountDirectory(directory(KVPLATFORM_USB_MOUNT))
    , m_backupPartition("/mnt/backup")
    , m_reservedDirectory(directory(KVPLATFORM_RESERVED))
    , m_dataSuffix("/org.kovan.tv.dax/data/tv") {}

path CProductPaths::partition() const {
    return path(m_root) / m_systemPartition / m_dataSuffix;
}

path CProductPaths::m_getFlashDeviceRootPath() {
    return cached([this] { return path(m_root); });
}

path CProductPaths::m_getDAXPartitionPath() {
    return cached([this] { return partition(); });
}

path CProductPaths::m_getDAXBigTempPath() {
    return cached([this] { return path(m_root) / m_bigTemporaryStorage / m_dataSuffix; });
}

path CProductPaths::m_getPostponeUpdateRWStoragePath() {
    return cached([this] { return m_getDAXBigTempPath() / "PostponeUpdate"; });
}

path CProductPaths::m_getFileSystemRootPath() {
    return cached([this] { return path(m_root); });
}

path CProductPaths::m_getSystemUsrAppsROPath() {
    return cached([this] { return path(m_root) / m_appsDirectory; });
}

path CProductPaths::m_getSystemUsrBinPath() {
    return cached([this] { return path(m_root) / m_binariesDirectory; });
}

path CProductPaths::m_getUSBMountPath() {
    return cached([this] { return path(m_root) / m_usbMountDirectory; });
}

path CProductPaths::m_getLastSearchingDateFilePath() {
    return cached([this] { return partition() / "LastSearchingDate"; });
}

path CProductPaths::m_getLastPluginFailureFlagFilePath() {
    return cached([this] { return partition() / "plugin_failure_flags"; });
}

path CProductPaths::m_getDAXFactoryResetFlagPath() {
    return cached([this] { return partition() / "DAXFactoryResetFlag"; });
}

path CProductPaths::m_getDAXFinalizingUpgradeFlagPath() {
    return cached([this] { return partition() / "DAXFinalizingUpgradeFlag"; });
}

path CProductPaths::m_getRofsScriptsDirectory() {
    return cached([this] { return path(m_root) / m_appsDirectory / "org.kovan.tv.dax"; });
}

path CProductPaths::m_getBackupPath() {
    return cached([this] { return path(m_root) / m_backupPartition; });
}

path CProductPaths::m_getUpdateInfoFilePath() {
    return cached([this] { return partition() / "UpdateInfo.xml"; });
}

path CProductPaths::m_getOOBEAckUpdateInfoFilePath() {
    return cached([this] { return partition() / "oobe" / "OOBEAckUpdateInfo.xml"; });
}

path CProductPaths::m_getInstallationLockPath() {
    return cached([this] { return partition() / "InstallationLock.dat"; });
}

path CProductPaths::m_getKPIDescriptionFilePath() {
    return cached([this] { return partition() / "kpi"; });
}

path CProductPaths::m_getResourcePath() {
    return cached([this] { return path(m_root) / m_appsDirectory / "com.velmora.tv.dax-nui/shared/res"; });
}

path CProductPaths::m_getLanguageResourcePath() {
    return cached([this] { return path(m_root) / m_sharedDataDirectory / "org.kovan.tv.dax/res/locale"; });
}

path CProductPaths::m_getCertificateFilePath() {
    return cached([this] { return path(m_root) / m_sharedDataDirectory / "cert/trca.pem"; });
}

path CProductPaths::m_getSourcePartitionNotGenuineFlagPath() {
    return cached([this] { return partition() / "SourcePartitionNotGenuineFlag"; });
}

path CProductPaths::m_getDAXAutoUpgradeActivationFilePath() {
    return cached([] { return path("/run/user/5001/.dax-auto-upgrade-launch"); });
}

path CProductPaths::m_getDAXUsingDebugKeyPath() {
    return cached([this] { return path(m_root) / m_sharedDataDirectory / "org.kovan.tv.dax/UsingDAXDevelopmentKeys"; });
}

path CProductPaths::m_getDAXDownloadedFilesPath() {
    return cached([this] { return m_getDAXBigTempPath() / "DAXDownloadedFiles"; });
}

path CProductPaths::m_getUpdateDetailsDataPath() {
    return cached([this] { return m_getDAXDownloadedFilesPath() / "UpdateDetailsData"; });
}

path CProductPaths::m_getUpdateDetailsFilePath() {
    return cached([this] { return m_getUpdateDetailsDataPath() / "update_details.xml"; });
}

path CProductPaths::m_getUpdateDetailsSchemaPath() {
    return cached([this] { return path(m_root) / m_sharedDataDirectory / "org.kovan.tv.dax/update_details.xsd"; });
}

path CProductPaths::m_getNotificationCounterDirPath() {
    return m_getDAXPartitionPath() / "AppsTempData";
}

path CProductPaths::m_getOSUpgradeDirPath() {
    return cached([this] { return path(m_root) / m_systemPartition / "upgrade"; });
}

std::vector<path> CProductPaths::m_getOSUpgradeLogFiles() {
    return cached([this] { return upgradeLogsIn(m_getOSUpgradeDirPath()); });
}

path CProductPaths::m_getIraNdfDirPath() {
    return cached([this] { return path(m_root) / "/tmp/ira_NDF"; });
}

path CProductPaths::m_getUpdateMainContentsInfoDataPath() {
    return cached([this] { return m_getDAXDownloadedFilesPath() / "UpdateMainContentsInfoData"; });
}

path CProductPaths::m_getWOCDaxInfoCandidatePath() {
    return m_getDAXPartitionPath() / "WOCDaxInfoCandidate.dat";
}

path CProductPaths::m_getWOCDaxInfoApprovedPath() {
    return m_getDAXPartitionPath() / "WOCDaxInfoApproved.dat";
}

} // namespace DAX::Platform
