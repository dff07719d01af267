#include "Platform/Product/IProductPaths.h"

#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Platform/Product/Implementation/CProductPaths.h"
#include "support/FakeKovan.h"
#include "support/ProcessDeath.h"
#include "support/TemporaryRoot.h"

namespace DAX {
namespace Tests {
namespace {

using boost::filesystem::path;
using Platform::CProductPaths;
using Platform::IProductPaths;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

struct Location {
    path (*operation)();
    const char* onTheDevice;
};

const Location LOCATIONS[] = {
    {&IProductPaths::getFlashDeviceRootPath, ""},
    {&IProductPaths::getDAXPartitionPath, "/mnt/systemrw/org.kovan.tv.dax/data/tv"},
    {&IProductPaths::getDAXBigTempPath, "/bigtemp/org.kovan.tv.dax/data/tv"},
    {&IProductPaths::getPostponeUpdateRWStoragePath, "/bigtemp/org.kovan.tv.dax/data/tv/PostponeUpdate"},
    {&IProductPaths::getFileSystemRootPath, ""},
    {&IProductPaths::getSystemUsrAppsROPath, "/apps"},
    {&IProductPaths::getSystemUsrBinPath, "/bin"},
    {&IProductPaths::getUSBMountPath, "/usb"},
    {&IProductPaths::getLastSearchingDateFilePath, "/mnt/systemrw/org.kovan.tv.dax/data/tv/LastSearchingDate"},
    {&IProductPaths::getLastPluginFailureFlagFilePath, "/mnt/systemrw/org.kovan.tv.dax/data/tv/plugin_failure_flags"},
    {&IProductPaths::getDAXFactoryResetFlagPath, "/mnt/systemrw/org.kovan.tv.dax/data/tv/DAXFactoryResetFlag"},
    {&IProductPaths::getDAXFinalizingUpgradeFlagPath,
     "/mnt/systemrw/org.kovan.tv.dax/data/tv/DAXFinalizingUpgradeFlag"},
    {&IProductPaths::getRofsScriptsDirectory, "/apps/org.kovan.tv.dax"},
    {&IProductPaths::getBackupPath, "/mnt/backup"},
    {&IProductPaths::getUpdateInfoFilePath, "/mnt/systemrw/org.kovan.tv.dax/data/tv/UpdateInfo.xml"},
    {&IProductPaths::getOOBEAckUpdateInfoFilePath, "/mnt/systemrw/org.kovan.tv.dax/data/tv/oobe/OOBEAckUpdateInfo.xml"},
    {&IProductPaths::getInstallationLockPath, "/mnt/systemrw/org.kovan.tv.dax/data/tv/InstallationLock.dat"},
    {&IProductPaths::getKPIDescriptionFilePath, "/mnt/systemrw/org.kovan.tv.dax/data/tv/kpi"},
    {&IProductPaths::getResourcePath, "/apps/com.velmora.tv.dax-nui/shared/res"},
    {&IProductPaths::getLanguageResourcePath, "/shared/org.kovan.tv.dax/res/locale"},
    {&IProductPaths::getCertificateFilePath, "/shared/cert/trca.pem"},
    {&IProductPaths::getSourcePartitionNotGenuineFlagPath,
     "/mnt/systemrw/org.kovan.tv.dax/data/tv/SourcePartitionNotGenuineFlag"},
    {&IProductPaths::getDAXAutoUpgradeActivationFilePath, "/run/user/5001/.dax-auto-upgrade-launch"},
    {&IProductPaths::getDAXUsingDebugKeyPath, "/shared/org.kovan.tv.dax/UsingDAXDevelopmentKeys"},
    {&IProductPaths::getDAXDownloadedFilesPath, "/bigtemp/org.kovan.tv.dax/data/tv/DAXDownloadedFiles"},
    {&IProductPaths::getUpdateDetailsDataPath,
     "/bigtemp/org.kovan.tv.dax/data/tv/DAXDownloadedFiles/UpdateDetailsData"},
    {&IProductPaths::getUpdateDetailsFilePath,
     "/bigtemp/org.kovan.tv.dax/data/tv/DAXDownloadedFiles/UpdateDetailsData/update_details.xml"},
    {&IProductPaths::getUpdateDetailsSchemaPath, "/shared/org.kovan.tv.dax/update_details.xsd"},
    {&IProductPaths::getNotificationCounterDirPath, "/mnt/systemrw/org.kovan.tv.dax/data/tv/AppsTempData"},
    {&IProductPaths::getOSUpgradeDirPath, "/mnt/systemrw/upgrade"},
    {&IProductPaths::getIraNdfDirPath, "/tmp/ira_NDF"},
    {&IProductPaths::getUpdateMainContentsInfoDataPath,
     "/bigtemp/org.kovan.tv.dax/data/tv/DAXDownloadedFiles/UpdateMainContentsInfoData"},
    {&IProductPaths::getWOCDaxInfoCandidatePath, "/mnt/systemrw/org.kovan.tv.dax/data/tv/WOCDaxInfoCandidate.dat"},
    {&IProductPaths::getWOCDaxInfoApprovedPath, "/mnt/systemrw/org.kovan.tv.dax/data/tv/WOCDaxInfoApproved.dat"},
};

void setRoot(const char* root) {
    ::setenv("KOVAN_ROOT", root, 1);
}

// An implementation whose partition is elsewhere.
class MovedPaths : public CProductPaths {
public:
    MovedPaths() : CProductPaths("/moved/root") {}
};

class OtherPartition : public CProductPaths {
public:
    path m_getDAXPartitionPath() override { return "/other"; }
};

void expectLocationsUnder(const std::string& root) {
    for (const Location& location : LOCATIONS) {
        const std::string expected = location.onTheDevice;
        const bool isUnderNoRoot = expected == "/run/user/5001/.dax-auto-upgrade-launch";
        EXPECT_EQ(location.operation().string(), isUnderNoRoot ? expected : root + expected);
    }
}

// Each in a process of its own, since the paths stay what they were at the first question.

TEST(IProductPathsTest, AreThoseOfTheDeviceWithoutARoot) {
    EXPECT_IN_CHILD({
        ::unsetenv("KOVAN_ROOT");
        expectLocationsUnder("");
    });
}

TEST(IProductPathsTest, TakeAnEmptyRootForNone) {
    EXPECT_IN_CHILD({
        setRoot("");
        expectLocationsUnder("");
    });
}

TEST(IProductPathsTest, HaveNoRootOnTheDevice) {
    EXPECT_IN_CHILD({
        Platform::ProductPaths::Details::setImplementationSingleton(std::make_unique<CProductPaths>());
        setRoot("/simulated");
        expectLocationsUnder("");
    });
}

TEST(IProductPathsTest, StandUnderTheRootOfTheSimulatedDevice) {
    EXPECT_IN_CHILD({
        setRoot("/simulated/device");
        expectLocationsUnder("/simulated/device");
    });
}

TEST(IProductPathsTest, AreThoseOfTheImplementationThatIsPutIn) {
    EXPECT_IN_CHILD({
        Platform::ProductPaths::Details::setImplementationSingleton(std::make_unique<MovedPaths>());
        expectLocationsUnder("/moved/root");
    });
}

TEST(IProductPathsTest, StayWhatTheyWereAtTheFirstQuestion) {
    EXPECT_IN_CHILD({
        setRoot("/first");
        IProductPaths::getInstallationLockPath();
        Platform::ProductPaths::Details::setImplementationSingleton(std::make_unique<MovedPaths>());
        EXPECT_EQ(IProductPaths::getInstallationLockPath(),
                  "/first/mnt/systemrw/org.kovan.tv.dax/data/tv/InstallationLock.dat");
        EXPECT_EQ(IProductPaths::getBackupPath(), "/moved/root/mnt/backup"); // asked for the first time
    });
}

TEST(IProductPathsTest, ThreeAreComposedAnewEachTime) {
    EXPECT_IN_CHILD({
        ::unsetenv("KOVAN_ROOT");
        for (const auto operation :
             {IProductPaths::getNotificationCounterDirPath, IProductPaths::getWOCDaxInfoCandidatePath,
              IProductPaths::getWOCDaxInfoApprovedPath}) {
            const std::string name = operation().filename().string();
            Platform::ProductPaths::Details::setImplementationSingleton(std::make_unique<OtherPartition>());
            EXPECT_EQ(operation().string(), "/other/" + name);
            Platform::ProductPaths::Details::setImplementationSingleton(nullptr);
        }
    });
}

TEST(IProductPathsTest, ComposeThePartitionFromItsPartsWhereItIsNotAskedFor) {
    EXPECT_IN_CHILD({
        Platform::ProductPaths::Details::setImplementationSingleton(std::make_unique<OtherPartition>());
        EXPECT_EQ(IProductPaths::getDAXPartitionPath(), "/other");
        EXPECT_EQ(IProductPaths::getUpdateInfoFilePath(), "/mnt/systemrw/org.kovan.tv.dax/data/tv/UpdateInfo.xml");
    });
}

TEST(IProductPathsTest, CannotBeMadeWithoutADirectoryOfTheDevice) {
    for (const int directory : {3, 6, 7, 10, 27, 28}) {
        FakeKovan::reset();
        FakeKovan::setDirectory(directory, std::nullopt);
        EXPECT_THROW(CProductPaths(), std::logic_error) << directory;
    }
}

TEST(IProductPathsTest, TellTheFailureToMakeThemAndTryAgain) {
    EXPECT_IN_CHILD({
        FakeKovan::setDirectory(28, std::nullopt);
        EXPECT_THROW(IProductPaths::getBackupPath(), std::logic_error);
        FakeKovan::setDirectory(28, "/apps");
        EXPECT_NO_THROW(IProductPaths::getBackupPath());
    });
}

class UpgradeLogs : public testing::Test {
protected:
    static std::string inUpgradeDirectory(const std::string& name) { return "mnt/systemrw/upgrade/" + name; }

    const TemporaryRoot root{TemporaryRoot::SAME_FOR_ALL};
};

TEST_F(UpgradeLogs, AreNoneWithoutTheirDirectory) {
    EXPECT_IN_CHILD(EXPECT_THAT(IProductPaths::getOSUpgradeLogFiles(), IsEmpty()));
}

TEST_F(UpgradeLogs, AreTheRegularFilesOfTheirName) {
    for (const char* const name : {"upgrade-1.log", "upgrade-.log", "upgrade-1.txt", "old-upgrade-1.log", "upgrade-log",
                                   "upgrade.log", "upgrade-2.log/upgrade-3.log"}) {
        root.write(inUpgradeDirectory(name), "");
    }
    std::filesystem::create_symlink(root / inUpgradeDirectory("upgrade-1.log"),
                                    root / inUpgradeDirectory("upgrade-4.log"));
    EXPECT_IN_CHILD(EXPECT_THAT(IProductPaths::getOSUpgradeLogFiles(),
                                UnorderedElementsAre((root / inUpgradeDirectory("upgrade-1.log")).string(),
                                                     (root / inUpgradeDirectory("upgrade-.log")).string())));
}

} // namespace
} // namespace Tests
} // namespace DAX
