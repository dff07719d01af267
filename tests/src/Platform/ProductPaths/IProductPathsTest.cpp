#include "Platform/ProductPaths/IProductPaths.h"

#include <algorithm>
#include <filesystem>
#include <initializer_list>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Platform/ProductPaths/IProductPathsImpl.h"
#include "Platform/ProductPaths/Implementation/CProductPaths.h"
#include "support/FakeKovan.h"
#include "support/ProcessDeath.h"
#include "support/Slots.h"
#include "support/TemporaryRoot.h"

namespace DAX::Tests {
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

// An implementation whose other directories with something below them are elsewhere.
class OtherDirectories : public CProductPaths {
public:
    path m_getDAXBigTempPath() override { return "/big"; }
    path m_getDAXDownloadedFilesPath() override { return "/downloads"; }
    path m_getUpdateDetailsDataPath() override { return "/details"; }
};

const std::initializer_list<path (*)()> COMPOSED_ANEW = {IProductPaths::getNotificationCounterDirPath,
                                                         IProductPaths::getWOCDaxInfoCandidatePath,
                                                         IProductPaths::getWOCDaxInfoApprovedPath};

bool isComposedAnew(const Location& location) {
    return std::find(COMPOSED_ANEW.begin(), COMPOSED_ANEW.end(), location.operation) != COMPOSED_ANEW.end();
}

std::string pathUnder(const std::string& root, const Location& location) {
    const std::string onTheDevice = location.onTheDevice;
    return onTheDevice == "/run/user/5001/.dax-auto-upgrade-launch" ? onTheDevice : root + onTheDevice;
}

void expectLocationsUnder(const std::string& root) {
    for (const Location& location : LOCATIONS) {
        EXPECT_EQ(location.operation().string(), pathUnder(root, location));
    }
}

// Each test runs in a process of its own, since the paths keep their first value.

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

TEST(IProductPathsTest, IgnoreASlashAtTheEndOfTheRoot) {
    EXPECT_IN_CHILD({
        setRoot("/simulated/device//");
        expectLocationsUnder("/simulated/device");
    });
    EXPECT_IN_CHILD({
        setRoot("/");
        expectLocationsUnder("");
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
        expectLocationsUnder("/first");
        Platform::ProductPaths::Details::setImplementationSingleton(std::make_unique<MovedPaths>());
        for (const Location& location : LOCATIONS) {
            EXPECT_EQ(location.operation().string(), pathUnder("/first", location));
        }
    });
}

TEST(IProductPathsTest, FollowAnotherImplementationUntilTheFirstQuestion) {
    EXPECT_IN_CHILD({
        setRoot("/first");
        IProductPaths::getInstallationLockPath();
        Platform::ProductPaths::Details::setImplementationSingleton(std::make_unique<MovedPaths>());
        EXPECT_EQ(IProductPaths::getInstallationLockPath(),
                  "/first/mnt/systemrw/org.kovan.tv.dax/data/tv/InstallationLock.dat");
        EXPECT_EQ(IProductPaths::getBackupPath(), "/moved/root/mnt/backup");
    });
}

TEST(IProductPathsTest, ThreeAreComposedAnewEachTime) {
    EXPECT_IN_CHILD({
        ::unsetenv("KOVAN_ROOT");
        for (const auto operation : COMPOSED_ANEW) {
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
        for (const Location& location : LOCATIONS) {
            if (location.operation != IProductPaths::getDAXPartitionPath && !isComposedAnew(location)) {
                EXPECT_EQ(location.operation().string(), location.onTheDevice);
            }
        }
    });
}

TEST(IProductPathsTest, AskForTheDirectoryThatTheyStandBelow) {
    EXPECT_IN_CHILD({
        Platform::ProductPaths::Details::setImplementationSingleton(std::make_unique<OtherDirectories>());
        EXPECT_EQ(IProductPaths::getPostponeUpdateRWStoragePath(), "/big/PostponeUpdate");
        EXPECT_EQ(IProductPaths::getUpdateMainContentsInfoDataPath(), "/downloads/UpdateMainContentsInfoData");
        EXPECT_EQ(IProductPaths::getUpdateDetailsFilePath(), "/details/update_details.xml");
        OtherDirectories directories;
        EXPECT_EQ(directories.CProductPaths::m_getDAXDownloadedFilesPath(), "/big/DAXDownloadedFiles");
        EXPECT_EQ(directories.CProductPaths::m_getUpdateDetailsDataPath(), "/downloads/UpdateDetailsData");
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

TEST_F(UpgradeLogs, StayWhatTheyWereAtTheFirstQuestion) {
    root.write(inUpgradeDirectory("upgrade-1.log"), "");
    EXPECT_IN_CHILD({
        const std::vector<path> logs = IProductPaths::getOSUpgradeLogFiles();
        root.write(inUpgradeDirectory("upgrade-2.log"), "");
        EXPECT_EQ(IProductPaths::getOSUpgradeLogFiles(), logs);
        EXPECT_EQ(logs.size(), 1u);
    });
}

TEST_F(UpgradeLogs, AreLookedForInTheDirectoryThatIsAskedFor) {
    class OtherDirectory : public CProductPaths {
    public:
        explicit OtherDirectory(std::string directory) : m_directory(std::move(directory)) {}
        path m_getOSUpgradeDirPath() override { return m_directory; }

    private:
        const std::string m_directory;
    };
    root.write("other/upgrade-1.log", "");
    EXPECT_IN_CHILD({
        OtherDirectory paths((root / "other").string());
        EXPECT_THAT(paths.m_getOSUpgradeLogFiles(), UnorderedElementsAre((root / "other/upgrade-1.log").string()));
    });
}

TEST(ProductPathsSlots, StandInTheirOrder) {
    using Paths = Platform::IProductPathsImpl;
    EXPECT_EQ(slotsOf(&Paths::m_getFlashDeviceRootPath, &Paths::m_getDAXPartitionPath, &Paths::m_getDAXBigTempPath,
                      &Paths::m_getPostponeUpdateRWStoragePath, &Paths::m_getFileSystemRootPath,
                      &Paths::m_getSystemUsrAppsROPath, &Paths::m_getSystemUsrBinPath, &Paths::m_getUSBMountPath,
                      &Paths::m_getLastSearchingDateFilePath, &Paths::m_getLastPluginFailureFlagFilePath,
                      &Paths::m_getDAXFactoryResetFlagPath, &Paths::m_getDAXFinalizingUpgradeFlagPath,
                      &Paths::m_getRofsScriptsDirectory, &Paths::m_getBackupPath, &Paths::m_getUpdateInfoFilePath,
                      &Paths::m_getOOBEAckUpdateInfoFilePath, &Paths::m_getInstallationLockPath,
                      &Paths::m_getKPIDescriptionFilePath, &Paths::m_getResourcePath, &Paths::m_getLanguageResourcePath,
                      &Paths::m_getCertificateFilePath, &Paths::m_getSourcePartitionNotGenuineFlagPath,
                      &Paths::m_getDAXAutoUpgradeActivationFilePath, &Paths::m_getDAXUsingDebugKeyPath,
                      &Paths::m_getDAXDownloadedFilesPath, &Paths::m_getUpdateDetailsDataPath,
                      &Paths::m_getUpdateDetailsFilePath, &Paths::m_getUpdateDetailsSchemaPath,
                      &Paths::m_getNotificationCounterDirPath, &Paths::m_getOSUpgradeDirPath,
                      &Paths::m_getOSUpgradeLogFiles, &Paths::m_getIraNdfDirPath,
                      &Paths::m_getUpdateMainContentsInfoDataPath, &Paths::m_getWOCDaxInfoCandidatePath,
                      &Paths::m_getWOCDaxInfoApprovedPath),
              slotsBehindTheDestructor(35));
}

} // namespace
} // namespace DAX::Tests
