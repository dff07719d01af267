#pragma once

#include <memory>
#include <vector>

#include <boost/filesystem/path.hpp>

namespace DAX::Platform {

class IProductPathsImpl;

// Where the update stack's files are; nobody else writes these locations down. Only computes names: nothing is created,
// and nothing but getOSUpgradeLogFiles() looks at a file. Any thread may ask. The first question throws
// std::logic_error when the device does not tell one of its directories. What an operation gave once stays for the life
// of the process, but for the last two, and getNotificationCounterDirPath().
class IProductPaths {
public:
    // What every path starts with; empty on the device.
    static boost::filesystem::path getFlashDeviceRootPath();

    // The persistent data directory.
    static boost::filesystem::path getDAXPartitionPath();

    // Large temporary data.
    static boost::filesystem::path getDAXBigTempPath();

    // Postponed update data.
    static boost::filesystem::path getPostponeUpdateRWStoragePath();

    // As getFlashDeviceRootPath.
    static boost::filesystem::path getFileSystemRootPath();

    // Read-only applications.
    static boost::filesystem::path getSystemUsrAppsROPath();

    // System binaries.
    static boost::filesystem::path getSystemUsrBinPath();

    // Where USB devices are mounted.
    static boost::filesystem::path getUSBMountPath();

    // The date of the last search for an upgrade.
    static boost::filesystem::path getLastSearchingDateFilePath();

    // What the plug-ins leave of their last failure.
    static boost::filesystem::path getLastPluginFailureFlagFilePath();

    // Exists while a factory reset is to come.
    static boost::filesystem::path getDAXFactoryResetFlagPath();

    // Exists while an upgrade is being finalized.
    static boost::filesystem::path getDAXFinalizingUpgradeFlagPath();

    // Scripts.
    static boost::filesystem::path getRofsScriptsDirectory();

    // The backup partition.
    static boost::filesystem::path getBackupPath();

    // The description of the update.
    static boost::filesystem::path getUpdateInfoFilePath();

    // The update that was accepted at the first start.
    static boost::filesystem::path getOOBEAckUpdateInfoFilePath();

    // The installation lock: it is taken exactly while this file exists.
    static boost::filesystem::path getInstallationLockPath();

    // What is told of events.
    static boost::filesystem::path getKPIDescriptionFilePath();

    // Resources of the user interface.
    static boost::filesystem::path getResourcePath();

    // Its translations.
    static boost::filesystem::path getLanguageResourcePath();

    // The certificate that updates are checked with.
    static boost::filesystem::path getCertificateFilePath();

    // Exists when the running system is not what the update was made for.
    static boost::filesystem::path getSourcePartitionNotGenuineFlagPath();

    // The marker that starts an upgrade by itself; under no root.
    static boost::filesystem::path getDAXAutoUpgradeActivationFilePath();

    // The marker for development keys.
    static boost::filesystem::path getDAXUsingDebugKeyPath();

    // Downloaded files.
    static boost::filesystem::path getDAXDownloadedFilesPath();

    // Details of the update: their directory, their document, its schema.
    static boost::filesystem::path getUpdateDetailsDataPath();
    static boost::filesystem::path getUpdateDetailsFilePath();
    static boost::filesystem::path getUpdateDetailsSchemaPath();

    // Temporary data of applications.
    static boost::filesystem::path getNotificationCounterDirPath();

    // The upgrade directory.
    static boost::filesystem::path getOSUpgradeDirPath();

    // The regular files "upgrade-*.log" in the upgrade directory, as they were at the first call; none without it.
    // boost::filesystem::filesystem_error when it cannot be read.
    static std::vector<boost::filesystem::path> getOSUpgradeLogFiles();
    static boost::filesystem::path getIraNdfDirPath();
    static boost::filesystem::path getUpdateMainContentsInfoDataPath();
    static boost::filesystem::path getWOCDaxInfoCandidatePath();
    static boost::filesystem::path getWOCDaxInfoApprovedPath();
};

namespace ProductPaths::Details {

// Puts another implementation in place of the device's own.
void setImplementationSingleton(std::unique_ptr<IProductPathsImpl> implementation);

} // namespace ProductPaths::Details

} // namespace DAX::Platform
