#include "ServiceInterface/InstallationState.h"

#include <filesystem>
#include <fstream>
#include <iterator>

#include <boost/crc.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Common/IO/ChecksumedSink.h"
#include "Common/IO/ChecksumedStream.h"
#include "Common/IO/FileExceptions.h"
#include "Common/IO/FileSink.h"
#include "Common/IO/FileStream.h"
#include "ServiceInterface/Implementation/InstallationRecord.h"
#include "serializers/binary/little_endian.h"
#include "support/AfterClose.h"
#include "support/Corruption.h"
#include "support/FakeKovan.h"
#include "support/OrdinaryUser.h"
#include "support/SmallDisk.h"
#include "support/TemporaryRoot.h"
#include "support/Thrown.h"

namespace DAX::Tests {
namespace {

using Common::IO::ChecksumedSink;
using Common::IO::ChecksumedStream;
using Common::IO::FileSink;
using Common::IO::FileSinkIOException;
using Common::IO::FileSinkNotEnoughSpaceException;
using Common::IO::FileStream;
using Common::IO::FileStreamIOException;
using Common::Utils::errinfo_description;
using Common::Utils::errinfo_stream_text;
using Service::ServiceCommon::loadInstallationState;
using Service::ServiceCommon::saveInstallationState;
using Service::ServiceCommon::writeInstallationRecord;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class InstallationStateTest : public ::testing::Test {
protected:
    std::string bytes() const { return root.read("lock"); }

    // The text under a tag in the exception that the saving throws.
    template <class Info, class E = FileSinkIOException>
    static std::string failureOfSaving(const std::string& path) {
        return thrownText<Info, E>([&] { saveInstallationState(path, "info"); });
    }

    bool isIntact() const { return ChecksumedStream(std::make_shared<FileStream>(path)).openCheck(); }

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

TEST_F(InstallationStateTest, WritesWhatItHasAlwaysWritten) {
    saveInstallationState(path, "Type: OTN(F) from: 1000 to: 1100");
    const auto golden = std::filesystem::path(__FILE__).parent_path() / "../../golden/io/InstallationLock.dat";
    std::ifstream file(golden, std::ios::binary);
    EXPECT_EQ(bytes(), std::string(std::istreambuf_iterator<char>(file), {}));
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

TEST_F(InstallationStateTest, AFileThatIsDamagedBeforeItIsReadFailsTheVerificationAndStays) {
    afterNextClose([this] { std::filesystem::resize_file(path, 21); });
    EXPECT_EQ(thrownDescription([&] { saveInstallationState(path, "info"); }),
              "InstallationState verification failed.");
    EXPECT_THAT(FakeKovan::journal(), IsEmpty());
    EXPECT_EQ(bytes().size(), 21U);
}

TEST_F(InstallationStateTest, AFileThatIsGoneBeforeItIsReadFailsTheVerification) {
    afterNextClose([this] { std::filesystem::remove(path); });
    EXPECT_EQ(thrownDescription([&] { saveInstallationState(path, "info"); }),
              "InstallationState verification failed.");
}

TEST_F(InstallationStateTest, ATextThatIsDamagedButFitsItsTrailerIsTakenForGood) {
    afterNextClose([this] { root.write("lock", std::string("CHECKSUMED\0\0\0\0", 14)); });
    EXPECT_NO_THROW(saveInstallationState(path, "info"));
}

TEST_F(InstallationStateTest, ATextOfMoreThan32BitsIsRefusedBeforeAnythingIsWritten) {
    root.write("lock", "before");
    using Bytes =
        boost::error_info<serializers::binary::detail::tag_cant_store_type_in_this_number_of_bytes, std::size_t>;
    try {
        writeInstallationRecord(path, std::string_view("", 0x100000000));
        FAIL() << "nothing was thrown";
    } catch (const serializers::lossy_conversion& exception) {
        EXPECT_EQ(*boost::get_error_info<Bytes>(exception), 4U);
    }
    EXPECT_EQ(bytes(), "before");
}

TEST_F(InstallationStateTest, TellsThePathAndTheReasonWhenTheFolderIsMissing) {
    const std::string lock = (root / "missing/lock").string();
    try {
        saveInstallationState(lock, "info");
        FAIL() << "nothing was thrown";
    } catch (const FileSinkIOException& exception) {
        EXPECT_EQ(textOf<errinfo_stream_text>(exception), " errno=2 (No such file or directory)");
        EXPECT_EQ(*boost::get_error_info<Common::Utils::errinfo_path>(exception), lock);
    }
    EXPECT_THAT(FakeKovan::journal(), IsEmpty());
}

TEST_F(InstallationStateTest, MakesNoFileInAFolderThatCannotBeWritten) {
    std::filesystem::permissions(root.path(), std::filesystem::perms(0555));
    const OrdinaryUser user;
    EXPECT_EQ(failureOfSaving<errinfo_stream_text>(path), " errno=13 (Permission denied)");
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(InstallationStateTest, AFullMediumIsAFailureAndLeavesTheFileWithoutATrailer) {
    SKIP_WITHOUT_SMALL_DISK();
    EXPECT_TRUE(onSmallDisk(root.path().string(), 64 * 1024, [this] {
        fillDisk(root.path().string());
        EXPECT_EQ(failureOfSaving<errinfo_description>(path), "Flushing file failed.");
        EXPECT_EQ(bytes(), ""); // locked, without a record
        EXPECT_FALSE(isIntact());
        EXPECT_EQ(failureOfSaving<errinfo_stream_text>(path), " errno=28 (No space left on device)");
        EXPECT_THAT(FakeKovan::messages("INF"), IsEmpty());

        std::filesystem::remove(root / "filler");
        saveInstallationState(path, "info");
        EXPECT_TRUE(isIntact());
        EXPECT_EQ(bytes().substr(0, 18), std::string("\4\0\0\0infoCHECKSUMED", 18));
    }));
}

TEST_F(InstallationStateTest, ADeviceThatIsAlwaysFullIsAFailure) {
    EXPECT_EQ(failureOfSaving<errinfo_description>("/dev/full"), "Flushing file failed.");
    EXPECT_EQ(failureOfSaving<errinfo_stream_text>("/dev/full"), " errno=28 (No space left on device)");
}

TEST_F(InstallationStateTest, AMediumThatIsFullInTheMiddleLeavesTheBeginningOfTheRecord) {
    SKIP_WITHOUT_SMALL_DISK();
    const std::string info(100000, 'x');
    EXPECT_TRUE(onSmallDisk(root.path().string(), 64 * 1024, [&] {
        EXPECT_EQ((thrownText<errinfo_description, FileSinkNotEnoughSpaceException>(
                      [&] { saveInstallationState(path, info); })),
                  "No space left on device.");
        EXPECT_EQ(bytes(), (std::string("\xa0\x86\x01\0", 4) + info).substr(0, 64 * 1024));
        EXPECT_FALSE(isIntact());
    }));
}

TEST_F(InstallationStateTest, AFullMediumIsReportedAsSuchWhenTheTextIsLongerThanTheBuffer) {
    EXPECT_EQ((thrownText<errinfo_description, FileSinkNotEnoughSpaceException>(
                  [] { saveInstallationState("/dev/full", std::string(100000, 'x')); })),
              "No space left on device.");
    EXPECT_EQ(FakeKovan::messages("WRN"),
              std::vector<std::string>{"Destroying ChecksumedSink without markEndOfData(). CRC will not be appended."});
}

TEST_F(InstallationStateTest, AFolderInTheFilesPlaceIsAFailure) {
    std::filesystem::create_directory(path);
    EXPECT_EQ(failureOfSaving<errinfo_stream_text>(path), " errno=21 (Is a directory)");
    EXPECT_TRUE(std::filesystem::is_directory(path));
}

TEST_F(InstallationStateTest, AnyChangedByteShowsInTheTrailer) {
    saveInstallationState(path, "info");
    EXPECT_TRUE(isIntact());
    const std::string good = bytes();
    for (std::size_t i = 0; i < good.size(); ++i) {
        std::string bad = good;
        bad[i] = static_cast<char>(bad[i] ^ 1);
        root.write("lock", bad);
        EXPECT_FALSE(isIntact()) << "byte " << i;
    }
}

TEST_F(InstallationStateTest, ACutFileIsNotIntact) {
    saveInstallationState(path, "info");
    const std::string good = bytes();
    for (std::size_t length = 0; length < good.size(); ++length) {
        root.write("lock", good.substr(0, length));
        EXPECT_FALSE(isIntact()) << length << " bytes";
    }
}

TEST_F(InstallationStateTest, LoadsWhatWasSaved) {
    for (const std::string& text : {std::string(), std::string("Type: OTN(F) from: 1000 to: 1100"),
                                    std::string("\0\n\xff", 3), std::string(5000, 'x')}) {
        saveInstallationState(path, text);
        EXPECT_EQ(loadInstallationState(path), text);
    }
}

TEST_F(InstallationStateTest, LoadsNothingFromAFileThatIsCutAnywhere) {
    saveInstallationState(path, "info");
    for (const std::string& cut : cutsOf(bytes())) {
        root.write("lock", cut);
        EXPECT_EQ(loadInstallationState(path), boost::none) << cut.size() << " bytes";
    }
}

TEST_F(InstallationStateTest, LoadsNothingFromAFileInWhichAByteIsAnother) {
    saveInstallationState(path, "info");
    for (const std::string& changed : changesOf(bytes(), std::string("\0\x01\xff", 3))) {
        root.write("lock", changed);
        EXPECT_EQ(loadInstallationState(path), boost::none);
    }
}

TEST_F(InstallationStateTest, LoadsNothingFromDataThatIsNotAsLongAsItSays) {
    for (const std::string& data : {std::string(), std::string("\0\0\0", 3), std::string("\x01\0\0\0", 4),
                                    std::string("\x01\0\0\0ab", 6), std::string("\xff\xff\xff\xff", 4) + "info"}) {
        ChecksumedSink sink(std::make_shared<FileSink>(path, true), true);
        sink.writeChunk(reinterpret_cast<const std::uint8_t*>(data.data()), data.size());
        sink.markEndOfData();
        sink.close();
        EXPECT_TRUE(isIntact());
        EXPECT_EQ(loadInstallationState(path), boost::none) << data.size() << " bytes";
    }
}

TEST_F(InstallationStateTest, ThrowsWhenThereIsNoFileToLoad) {
    EXPECT_THROW(loadInstallationState(path), FileStreamIOException);
}

} // namespace
} // namespace DAX::Tests
