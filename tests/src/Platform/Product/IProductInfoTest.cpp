#include "Platform/Product/IProductInfo.h"

#include <filesystem>

#include <boost/filesystem/exception.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Common/IO/FileExceptions.h"
#include "support/FakeKovan.h"
#include "support/TemporaryRoot.h"

namespace DAX::Tests {
namespace {

using Platform::IProductInfo;
using testing::ElementsAre;
using testing::IsEmpty;

const std::string PARTITION = "mnt/systemrw/org.kovan.tv.dax/data/tv/";
const std::string LOCK_FILE = PARTITION + "InstallationLock.dat";

class ProductFiles : public testing::Test {
protected:
    bool isThere(const std::string& file) const { return std::filesystem::exists(root / file); }

    const TemporaryRoot root{TemporaryRoot::SAME_FOR_ALL};
};

class InstallationLock : public ProductFiles {};

TEST_F(InstallationLock, IsTheExistenceOfItsFile) {
    EXPECT_FALSE(IProductInfo::isInstallationLocked());
    root.write(LOCK_FILE, "");
    EXPECT_TRUE(IProductInfo::isInstallationLocked());
    std::filesystem::remove(root / LOCK_FILE);
    EXPECT_FALSE(IProductInfo::isInstallationLocked());
}

TEST_F(InstallationLock, IsReleasedByTheRemovalOfItsFile) {
    root.write(LOCK_FILE, "not looked at");
    IProductInfo::releaseInstallationLock();
    EXPECT_FALSE(isThere(LOCK_FILE));
    EXPECT_THAT(FakeKovan::journal(), IsEmpty());
}

TEST_F(InstallationLock, IsNotTakenForReleasedWhenItCannotBeRemoved) {
    root.write(LOCK_FILE + "/a file that keeps it", "");
    EXPECT_THROW(IProductInfo::releaseInstallationLock(), boost::filesystem::filesystem_error);
    EXPECT_TRUE(IProductInfo::isInstallationLocked());
    EXPECT_THAT(FakeKovan::journal(), IsEmpty());
}

TEST_F(InstallationLock, IsWarnedOfWhenThereIsNoneToRelease) {
    IProductInfo::releaseInstallationLock();
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log WRN InstallationLock was not locked (checked for file:  " +
                                                  (root / LOCK_FILE).string() + ")"));
}

const std::string NOT_GENUINE = PARTITION + "SourcePartitionNotGenuineFlag";

class NotGenuineFlag : public ProductFiles {};

TEST_F(NotGenuineFlag, IsTheExistenceOfItsFile) {
    EXPECT_FALSE(IProductInfo::isSourcePartitionNotGenuine());
    root.write(NOT_GENUINE, "");
    EXPECT_TRUE(IProductInfo::isSourcePartitionNotGenuine());
}

TEST_F(NotGenuineFlag, TellsWhyItIsThere) {
    std::filesystem::create_directories(root / PARTITION);
    IProductInfo::setSourcePartitionNotGenuineFlag();
    EXPECT_EQ(
        root.read(NOT_GENUINE),
        "This flag file means that the last BDiff upgrade failed because source partitions' CRCs on device and in "
        "the BDiff didn't match.\n"
        "It could be caused by manual changes to the source partition on the device.\n"
        "Next upgrade should be full.\n");
    EXPECT_THAT(FakeKovan::messages("INF"), ElementsAre("Setting DAX SourcePartitionNotGenuine flag."));
    EXPECT_TRUE(IProductInfo::isSourcePartitionNotGenuine());
}

TEST_F(NotGenuineFlag, IsWrittenOnce) {
    root.write(NOT_GENUINE, "earlier");
    IProductInfo::setSourcePartitionNotGenuineFlag();
    EXPECT_EQ(root.read(NOT_GENUINE), "earlier");
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log INF Setting DAX SourcePartitionNotGenuine flag."));
}

TEST_F(NotGenuineFlag, CannotBeWrittenWithoutItsDirectory) {
    EXPECT_THROW(IProductInfo::setSourcePartitionNotGenuineFlag(), Common::IO::FileSinkIOException);
    EXPECT_FALSE(IProductInfo::isSourcePartitionNotGenuine());
    EXPECT_EQ(FakeKovan::journal().front(), "log INF Setting DAX SourcePartitionNotGenuine flag.");
}

TEST_F(NotGenuineFlag, IsAnnouncedBeforeItIsReleased) {
    root.write(NOT_GENUINE + "/a file that keeps it", "");
    EXPECT_THROW(IProductInfo::releaseSourcePartitionNotGenuineFlag(), boost::filesystem::filesystem_error);
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log INF Releasing SourcePartitionNotGenuine flag."));
}

TEST_F(NotGenuineFlag, IsReleasedWhetherItIsThereOrNot) {
    root.write(NOT_GENUINE, "");
    for (int i = 0; i < 2; ++i) {
        IProductInfo::releaseSourcePartitionNotGenuineFlag();
        EXPECT_FALSE(isThere(NOT_GENUINE));
    }
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log INF Releasing SourcePartitionNotGenuine flag.",
                                                  "log INF Releasing SourcePartitionNotGenuine flag."));
}

} // namespace
} // namespace DAX::Tests
