#pragma once

#include <vector>

#include <boost/core/noncopyable.hpp>
#include <boost/filesystem/path.hpp>

namespace DAX::Platform {

// The implementation behind IProductPaths. Each slot m_NAME does what IProductPaths::NAME is documented to do. Any
// thread may call.
class IProductPathsImpl : private boost::noncopyable {
public:
    virtual ~IProductPathsImpl() = default;

    virtual boost::filesystem::path m_getFlashDeviceRootPath() = 0;
    virtual boost::filesystem::path m_getDAXPartitionPath() = 0;
    virtual boost::filesystem::path m_getDAXBigTempPath() = 0;
    virtual boost::filesystem::path m_getPostponeUpdateRWStoragePath() = 0;
    virtual boost::filesystem::path m_getFileSystemRootPath() = 0;
    virtual boost::filesystem::path m_getSystemUsrAppsROPath() = 0;
    virtual boost::filesystem::path m_getSystemUsrBinPath() = 0;
    virtual boost::filesystem::path m_getUSBMountPath() = 0;
    virtual boost::filesystem::path m_getLastSearchingDateFilePath() = 0;
    virtual boost::filesystem::path m_getLastPluginFailureFlagFilePath() = 0;
    virtual boost::filesystem::path m_getDAXFactoryResetFlagPath() = 0;
    virtual boost::filesystem::path m_getDAXFinalizingUpgradeFlagPath() = 0;
    virtual boost::filesystem::path m_getRofsScriptsDirectory() = 0;
    virtual boost::filesystem::path m_getBackupPath() = 0;
    virtual boost::filesystem::path m_getUpdateInfoFilePath() = 0;
    virtual boost::filesystem::path m_getOOBEAckUpdateInfoFilePath() = 0;
    virtual boost::filesystem::path m_getInstallationLockPath() = 0;
    virtual boost::filesystem::path m_getKPIDescriptionFilePath() = 0;
    virtual boost::filesystem::path m_getResourcePath() = 0;
    virtual boost::filesystem::path m_getLanguageResourcePath() = 0;
    virtual boost::filesystem::path m_getCertificateFilePath() = 0;
    virtual boost::filesystem::path m_getSourcePartitionNotGenuineFlagPath() = 0;
    virtual boost::filesystem::path m_getDAXAutoUpgradeActivationFilePath() = 0;
    virtual boost::filesystem::path m_getDAXUsingDebugKeyPath() = 0;
    virtual boost::filesystem::path m_getDAXDownloadedFilesPath() = 0;
    virtual boost::filesystem::path m_getUpdateDetailsDataPath() = 0;
    virtual boost::filesystem::path m_getUpdateDetailsFilePath() = 0;
    virtual boost::filesystem::path m_getUpdateDetailsSchemaPath() = 0;
    virtual boost::filesystem::path m_getNotificationCounterDirPath() = 0;
    virtual boost::filesystem::path m_getOSUpgradeDirPath() = 0;
    virtual std::vector<boost::filesystem::path> m_getOSUpgradeLogFiles() = 0;
    virtual boost::filesystem::path m_getIraNdfDirPath() = 0;
    virtual boost::filesystem::path m_getUpdateMainContentsInfoDataPath() = 0;
    virtual boost::filesystem::path m_getWOCDaxInfoCandidatePath() = 0;
    virtual boost::filesystem::path m_getWOCDaxInfoApprovedPath() = 0;
};

} // namespace DAX::Platform
