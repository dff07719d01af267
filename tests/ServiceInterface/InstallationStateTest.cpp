#include "ServiceInterface/InstallationState.h"

#include <filesystem>
#include <fstream>
#include <iterator>

#include <boost/crc.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ServiceInterface/Implementation/ChecksummedFile.h"
#include "support/FakeKovan.h"
#include "support/OrdinaryUser.h"
#include "support/TemporaryRoot.h"
#include "support/Thrown.h"

namespace DAX {
namespace Tests {
namespace {

using Service::ServiceCommon::isChecksummedFileIntact;
using Service::ServiceCommon::littleEndian32;
using Service::ServiceCommon::saveInstallationState;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class InstallationStateTest : public ::testing::Test {
protected:
    std::string bytes() const { return root.read("lock"); }

    // The stream text of what saving throws.
    static std::string failureOfSaving(const std::string& path) {
        return thrownText<Common::Utils::errinfo_stream_text>([&] { saveInstallationState(path, "info"); });
    }

    const TemporaryRoot root;
    const std::string path = (root / "lock").string();
};

TEST_F(InstallationStateTest, WritesLengthTextMagicAndChecksum) {
    saveInstallationState(path, "123456789");
    const std::string data = std::string("\x09\0\0\0", 4) + "123456789";
    boost::crc_optimal<32, 0x04C11DB7, 0xFFFFFFFF, 0xFFFFFFFF, true, true> crc;
    crc.process_bytes(data.data(), data.size());
    ASSERT_EQ(bytes().size(), 9U + 18U);
    EXPECT_EQ(bytes().substr(0, 23), data + "CHECKSUMED");
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(static_cast<unsigned char>(bytes()[23 + static_cast<std::size_t>(i)]),
                  crc.checksum() >> (8 * i) & 255);
    }
}

TEST_F(InstallationStateTest, WritesAnEmptyTextAsEighteenKnownBytes) {
    saveInstallationState(path, "");
    EXPECT_EQ(bytes(), std::string("\0\0\0\0CHECKSUMED\x1c\xdf\x44\x21", 18));
}

TEST_F(InstallationStateTest, WritesTheLengthLowByteFirst) {
    saveInstallationState(path, std::string(0x010203, 'x'));
    EXPECT_EQ(bytes().substr(0, 4), std::string("\x03\x02\x01\0", 4));
    EXPECT_EQ(bytes().size(), 0x010203U + 18U);
}

TEST_F(InstallationStateTest, KeepsEveryByteOfTheText) {
    const std::string info("line\nnull\0\xff", 11);
    saveInstallationState(path, info);
    EXPECT_EQ(bytes().substr(4, 11), info);
}

TEST_F(InstallationStateTest, ReplacesALongerFile) {
    root.write("lock", std::string(1000, 'x'));
    saveInstallationState(path, "info");
    EXPECT_EQ(bytes().size(), 22U);
}

TEST_F(InstallationStateTest, LogsTheTextAndThenTheFile) {
    saveInstallationState(path, "info");
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log INF Upgrade info: info", "log INF Upgrade info saved in file: " + path));
}

TEST_F(InstallationStateTest, AFileWithoutItsTrailerFailsTheVerificationAndStays) {
    EXPECT_EQ(thrownDescription([] { saveInstallationState("/dev/null", "info"); }),
              "InstallationState verification failed.");
    EXPECT_THAT(FakeKovan::journal(), IsEmpty());
    EXPECT_TRUE(std::filesystem::exists("/dev/null"));
}

TEST_F(InstallationStateTest, TellsThePathAndTheReasonWhenTheFolderIsMissing) {
    const std::string lock = (root / "missing/lock").string();
    try {
        saveInstallationState(lock, "info");
        FAIL() << "nothing was thrown";
    } catch (const Common::Utils::GenericException& exception) {
        EXPECT_EQ(textOf<Common::Utils::errinfo_stream_text>(exception),
                  "Cannot open file errno=2 (No such file or directory)");
        EXPECT_EQ(*boost::get_error_info<Common::Utils::errinfo_path>(exception), lock);
    }
    EXPECT_THAT(FakeKovan::journal(), IsEmpty());
}

TEST_F(InstallationStateTest, MakesNoFileInAFolderThatCannotBeWritten) {
    std::filesystem::permissions(root.path(), std::filesystem::perms(0555));
    const OrdinaryUser user;
    EXPECT_EQ(failureOfSaving(path), "Cannot open file errno=13 (Permission denied)");
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(InstallationStateTest, AFullMediumIsAFailure) {
    EXPECT_EQ(failureOfSaving("/dev/full"), "Cannot write file errno=28 (No space left on device)");
}

TEST_F(InstallationStateTest, AFolderInTheFilesPlaceIsAFailure) {
    std::filesystem::create_directory(path);
    EXPECT_EQ(failureOfSaving(path), "Cannot open file errno=21 (Is a directory)");
}

TEST_F(InstallationStateTest, TheTrailerFitsAFileThatWasSaved) {
    saveInstallationState(path, "info");
    EXPECT_TRUE(isChecksummedFileIntact(path));
}

TEST_F(InstallationStateTest, AnyChangedByteShowsInTheTrailer) {
    saveInstallationState(path, "info");
    const std::string good = bytes();
    for (std::size_t i = 0; i < good.size(); ++i) {
        std::string bad = good;
        bad[i] = static_cast<char>(bad[i] ^ 1);
        root.write("lock", bad);
        EXPECT_FALSE(isChecksummedFileIntact(path)) << "byte " << i;
    }
}

TEST_F(InstallationStateTest, ACutFileIsNotIntact) {
    saveInstallationState(path, "info");
    const std::string good = bytes();
    for (const std::size_t length : {std::size_t{0}, std::size_t{13}, std::size_t{14}, good.size() - 1}) {
        root.write("lock", good.substr(0, length));
        EXPECT_FALSE(isChecksummedFileIntact(path)) << length << " bytes";
    }
}

TEST(LittleEndian32, RefusesWhatDoesNotFit) {
    EXPECT_EQ(littleEndian32(0xffffffff), "\xff\xff\xff\xff");
    EXPECT_EQ(thrownText<Common::Utils::errinfo_stream_text>([] { littleEndian32(0x100000000); }),
              "Number does not fit in 32 bits: 4294967296");
}

} // namespace
} // namespace Tests
} // namespace DAX
