#pragma once

#include <memory>
#include <vector>

#include <boost/filesystem/path.hpp>

namespace DAX::Platform {

class IProductPathsImpl;

// Where the update stack's files are; no other place names these locations. The operations compute names: they create
// nothing, and only getOSUpgradeLogFiles() looks at the file system. Any thread may call.
//
// Every operation throws std::logic_error as long as the device does not tell one of its directories. The first result
// of an operation is kept for the life of the process, except for getNotificationCounterDirPath(),
// getWOCDaxInfoCandidatePath() and getWOCDaxInfoApprovedPath().
class IProductPaths {
public:
    // The root that every path but one starts with; empty on the device. Only what begins with a slash may be joined to
    // it: the rest would be looked for in the working directory there.
    static boost::filesystem::path getFlashDeviceRootPath();

    // The persistent data directory.
    static boost::filesystem::path getDAXPartitionPath();

    // Large temporary data.
    static boost::filesystem::path getDAXBigTempPath();

    // Postponed update data.
    static boost::filesystem::path getPostponeUpdateRWStoragePath();

    // The same root as getFlashDeviceRootPath().
    static boost::filesystem::path getFileSystemRootPath();

    // Read-only applications.
    static boost::filesystem::path getSystemUsrAppsROPath();

    // System binaries.
    static boost::filesystem::path getSystemUsrBinPath();

    // Where USB devices are mounted.
    static boost::filesystem::path getUSBMountPath();

    // The date of the last search for an upgrade.
    static boost::filesystem::path getLastSearchingDateFilePath();

    // The flag that plug-ins leave after their last failure.
    static boost::filesystem::path getLastPluginFailureFlagFilePath();

    // Exists while a factory reset is pending.
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

    // The installation lock, which is in force exactly while this file exists.
    static boost::filesystem::path getInstallationLockPath();

    // The description of events for the reporting service.
    static boost::filesystem::path getKPIDescriptionFilePath();

    // Resources of the user interface.
    static boost::filesystem::path getResourcePath();

    // Translations of the user interface.
    static boost::filesystem::path getLanguageResourcePath();

    // The certificate by which updates are checked.
    static boost::filesystem::path getCertificateFilePath();

    // Exists when the source partitions did not match the last differential upgrade.
    static boost::filesystem::path getSourcePartitionNotGenuineFlagPath();

    // The marker that starts the automatic upgrade. This path is fixed: it does not start with the root.
    static boost::filesystem::path getDAXAutoUpgradeActivationFilePath();

    // The marker for development keys.
    static boost::filesystem::path getDAXUsingDebugKeyPath();

    // Downloaded files.
    static boost::filesystem::path getDAXDownloadedFilesPath();

    // The directory of the update's details, the document in it, and the document's schema.
    static boost::filesystem::path getUpdateDetailsDataPath();
    static boost::filesystem::path getUpdateDetailsFilePath();
    static boost::filesystem::path getUpdateDetailsSchemaPath();

    // Temporary data of applications.
    static boost::filesystem::path getNotificationCounterDirPath();

    // The upgrade directory.
    static boost::filesystem::path getOSUpgradeDirPath();

    // The regular files "upgrade-*.log" in the upgrade directory, as they were at the first call; empty when the
    // directory does not exist. Throws boost::filesystem::filesystem_error when it cannot be read.
    static std::vector<boost::filesystem::path> getOSUpgradeLogFiles();

    // The folder "/tmp/ira_NDF".
    static boost::filesystem::path getIraNdfDirPath();

    // Information about the contents of an update, among the downloaded files.
    static boost::filesystem::path getUpdateMainContentsInfoDataPath();

    // The file "WOCDaxInfoCandidate.dat" in the persistent data directory.
    static boost::filesystem::path getWOCDaxInfoCandidatePath();

    // The file "WOCDaxInfoApproved.dat" in the persistent data directory.
    static boost::filesystem::path getWOCDaxInfoApprovedPath();
};

namespace ProductPaths::Details {

// Puts another implementation in place of the device's own; null brings that back, with the paths that it has kept. Any
// thread may call; calls that are under way end on the earlier implementation.
void setImplementationSingleton(std::unique_ptr<IProductPathsImpl> implementation);

} // namespace ProductPaths::Details

} // namespace DAX::Platform
