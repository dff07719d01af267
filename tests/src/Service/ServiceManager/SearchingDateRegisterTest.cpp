#include "Service/ServiceManager/Implementation/SearchingDateRegister.h"

#include <chrono>
#include <future>
#include <memory>

#include <boost/date_time/posix_time/time_formatters.hpp>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/un.h>
#include <unistd.h>

#include "ServiceFixture.h"
#include "support/AllocationMeter.h"
#include "support/CpuTime.h"
#include "support/NoMemory.h"
#include "support/OrdinaryUser.h"
#include "support/OtherThread.h"
#include "support/ProcessDeath.h"
#include "support/SmallDisk.h"
#include "support/Thrown.h"

namespace DAX::Tests {
namespace {

using Service::ServiceManager::SearchingDateRegister;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

const char DATE_FILE[] = "mnt/systemrw/org.kovan.tv.dax/data/tv/LastSearchingDate";

class SearchingDateRegisterTest : public ServiceFixture {
protected:
    std::string path() const { return (root / DATE_FILE).string(); }

    // The date as text; "<none>" for an empty result.
    static std::string date() {
        const auto found = SearchingDateRegister::getInstance()->getDate();
        return found ? to_iso_string(*found) : "<none>";
    }

    void openFoldersToAll() const { std::filesystem::permissions(root.path(), std::filesystem::perms(0755)); }
};

// The process that runs the statement runs no other test, so these are its first callers. The second one comes while
// the first one is making the object.
TEST_F(SearchingDateRegisterTest, GivesTheSameObjectToItsFirstTwoCallers) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_IN_CHILD({
        std::shared_ptr<SearchingDateRegister> second;
        std::unique_ptr<OtherThread> other;
        beforeTheNextAllocation([&] {
            other = std::make_unique<OtherThread>([&second] { second = SearchingDateRegister::getInstance(); });
            EXPECT_TRUE(other->waitUntilItWaits());
        });
        const auto first = SearchingDateRegister::getInstance();
        EXPECT_NE(first, nullptr);
        other->finish();
        EXPECT_EQ(second, first);
    });
}

TEST_F(SearchingDateRegisterTest, WritesTheLocalTimeOfNow) {
    FakeKovan::setLocalTime(1424435696);
    SearchingDateRegister::getInstance()->registerCurrentDate();
    EXPECT_EQ(root.read(DATE_FILE), "20150220T123456");
    EXPECT_THAT(journal(), ElementsAre("log INF Current local time and date: 1424435696",
                                       "log INF Date: 20150220T123456 will be saved in file: " + path()));
}

TEST_F(SearchingDateRegisterTest, ReadsWhatItWrote) {
    FakeKovan::setLocalTime(1424435696);
    SearchingDateRegister::getInstance()->registerCurrentDate();
    forget();
    EXPECT_EQ(date(), "20150220T123456");
    EXPECT_THAT(journal(), ElementsAre("log INF Date: 20150220T123456 got from file: " + path()));
}

TEST_F(SearchingDateRegisterTest, WritesAndReadsWhatItAlwaysHas) {
    const auto golden = std::filesystem::path(__FILE__).parent_path() / "../../../golden/io/LastSearchingDate";
    std::filesystem::create_directories((root / DATE_FILE).parent_path());
    std::filesystem::copy_file(golden, root / DATE_FILE);
    const std::string before = root.read(DATE_FILE);
    EXPECT_EQ(date(), "20260102T030405");
    FakeKovan::setLocalTime(1767323045);
    SearchingDateRegister::getInstance()->registerCurrentDate();
    EXPECT_EQ(root.read(DATE_FILE), before);
}

TEST_F(SearchingDateRegisterTest, ASecondWriteReplacesTheFirst) {
    root.write(DATE_FILE, "20200101T000000 and much more text behind it");
    FakeKovan::setLocalTime(1424435696);
    SearchingDateRegister::getInstance()->registerCurrentDate();
    EXPECT_EQ(root.read(DATE_FILE), "20150220T123456");
}

TEST_F(SearchingDateRegisterTest, MakesTheFoldersOfTheFile) {
    std::filesystem::remove_all(root / "mnt");
    SearchingDateRegister::getInstance()->registerCurrentDate();
    EXPECT_EQ(root.read(DATE_FILE), "19700101T000000");
}

TEST_F(SearchingDateRegisterTest, ThrowsWhenTheFileCannotBeOpenedForWriting) {
    std::filesystem::create_directories(root / DATE_FILE);
    EXPECT_EQ((thrownText<Common::Utils::errinfo_stream_text, SearchingDateRegister::FailToOpenExistingFileException>(
                  [] { SearchingDateRegister::getInstance()->registerCurrentDate(); })),
              "Unable to open date register file: " + path());
    EXPECT_THAT(journal(), ElementsAre("log INF Current local time and date: 0",
                                       "log ERR Unable to open date register file: " + path()));
}

TEST_F(SearchingDateRegisterTest, WithoutAFileThereIsNoDate) {
    EXPECT_EQ(date(), "<none>");
    EXPECT_THAT(journal(), ElementsAre("log ERR There is no file :" + path()));
}

TEST_F(SearchingDateRegisterTest, RefusesASymbolicLinkToAValidFile) {
    root.write("elsewhere", "20200101T000000");
    std::filesystem::create_symlink(root / "elsewhere", root / DATE_FILE);
    EXPECT_EQ(date(), "<none>");
    EXPECT_THAT(journal(), ElementsAre("log ERR Reading from symbolic link file is security violation : " + path()));
}

TEST_F(SearchingDateRegisterTest, ADanglingLinkCountsAsNoFile) {
    std::filesystem::create_symlink(root / "nowhere", root / DATE_FILE);
    EXPECT_EQ(date(), "<none>");
    EXPECT_THAT(journal(), ElementsAre("log ERR There is no file :" + path()));
}

TEST_F(SearchingDateRegisterTest, CannotOpenAReadOnlyFile) {
    root.write(DATE_FILE, "20200101T000000");
    std::filesystem::permissions(root / DATE_FILE, std::filesystem::perms(0444));
    openFoldersToAll();
    {
        const OrdinaryUser user;
        EXPECT_EQ(date(), "<none>");
    }
    EXPECT_THAT(journal(), ElementsAre("log ERR SearchingDateRegister::getDate cannot open the file: " + path()));
}

TEST_F(SearchingDateRegisterTest, TheLastSecondOf2014IsTooEarly) {
    root.write(DATE_FILE, "20141231T235959");
    EXPECT_EQ(date(), "<none>");
    EXPECT_THAT(journal(), ElementsAre("log INF Date: 20141231T235959 got from file: " + path(),
                                       "log WRN Last searching date is too early and it should not be displayed."));
}

TEST_F(SearchingDateRegisterTest, TheFirstSecondOf2015IsShown) {
    root.write(DATE_FILE, "20150101T000000");
    EXPECT_EQ(date(), "20150101T000000");
    EXPECT_THAT(journal(), ElementsAre("log INF Date: 20150101T000000 got from file: " + path()));
}

TEST_F(SearchingDateRegisterTest, ReadsTheFirstWordOfTheFileAlone) {
    root.write(DATE_FILE, "\n  20200101T000000\nmore");
    EXPECT_EQ(date(), "20200101T000000");
}

class CorruptedDate : public SearchingDateRegisterTest, public ::testing::WithParamInterface<const char*> {};

TEST_P(CorruptedDate, GivesNoDate) {
    root.write(DATE_FILE, GetParam());
    EXPECT_EQ(date(), "<none>");
    EXPECT_THAT(journal(), ElementsAre(StartsWith("log ERR SearchingDateRegister::getDate File with date data is "
                                                  "probably corrupted. Exception occurred: ")));
}

INSTANTIATE_TEST_SUITE_P(AnythingButATimestamp, CorruptedDate,
                         ::testing::Values("", "yesterday", "20201301T000000", "20200230T000000", "T", "20200101T",
                                           "20200101", "99990230T000000", "00000101T000000", "13991231T235959",
                                           "100000101T000000"));

INSTANTIATE_TEST_SUITE_P(NoPointInTime, CorruptedDate,
                         ::testing::Values("not-a-date-time", "+infinity", "-infinity", "99991231T999999",
                                           "99991231T240000", "14000101T-240000"));

class UnreadableDate : public SearchingDateRegisterTest {
protected:
    // Checks that there is no date and only this log line, and that it takes neither a second of work nor a megabyte.
    void expectNoDate(const std::string& line) {
        const auto begin = cpuTimeOf(getpid());
        const AllocationMeter meter;
        EXPECT_EQ(date(), "<none>");
        EXPECT_LT(meter.bytes(), 1024U * 1024U);
        EXPECT_LT(cpuTimeOf(getpid()) - begin, std::chrono::seconds(1));
        EXPECT_THAT(journal(), ElementsAre("log ERR " + line));
    }

    const std::string cannotOpen = "SearchingDateRegister::getDate cannot open the file: " + path();
    const std::string corrupted =
        "SearchingDateRegister::getDate File with date data is probably corrupted. Exception occurred: ";
};

TEST_F(UnreadableDate, IsALinkToItself) {
    std::filesystem::create_symlink(root / DATE_FILE, root / DATE_FILE);
    expectNoDate("Reading from symbolic link file is security violation : " + path());
}

TEST_F(UnreadableDate, StandsInAFolderThatCannotBeSearched) {
    root.write(DATE_FILE, "20200101T000000");
    openFoldersToAll();
    const auto folder = (root / DATE_FILE).parent_path();
    std::filesystem::permissions(folder, std::filesystem::perms::none);
    {
        const OrdinaryUser user;
        expectNoDate(cannotOpen);
    }
    std::filesystem::permissions(folder, std::filesystem::perms(0755));
}

TEST_F(UnreadableDate, StandsBehindAFolderThatIsALinkToItself) {
    const auto folder = (root / DATE_FILE).parent_path();
    std::filesystem::remove_all(folder);
    std::filesystem::create_symlink(folder, folder);
    expectNoDate(cannotOpen);
}

TEST_F(UnreadableDate, IsAPipe) {
    ASSERT_EQ(mkfifo(path().c_str(), 0666), 0);
    expectNoDate(cannotOpen);
}

TEST_F(UnreadableDate, IsAFolder) {
    std::filesystem::create_directories(root / DATE_FILE);
    expectNoDate(cannotOpen);
}

TEST_F(UnreadableDate, IsADevice) {
    if (mknod(path().c_str(), S_IFCHR | 0666, makedev(1, 5)) != 0) {
        GTEST_SKIP() << "only the superuser may make a device";
    }
    expectNoDate(cannotOpen);
}

TEST_F(UnreadableDate, IsASocket) {
    const int listener = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    ASSERT_LT(path().size(), sizeof(address.sun_path));
    path().copy(address.sun_path, sizeof(address.sun_path) - 1);
    ASSERT_EQ(::bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);
    expectNoDate(cannotOpen);
    ::close(listener);
}

TEST_F(UnreadableDate, IsAGigabyte) {
    root.write(DATE_FILE, "20200101T000000");
    std::filesystem::resize_file(root / DATE_FILE, std::uintmax_t(1) << 30U);
    expectNoDate(corrupted + "File is larger than 65536 bytes.");
}

class UnwritableDate : public SearchingDateRegisterTest {
protected:
    UnwritableDate() { FakeKovan::setLocalTime(1424435696); }

    // The lines of level ERR. Checks that no line says that a date was saved.
    static std::string toldFailure() {
        EXPECT_EQ(FakeKovan::countContaining("INF", "will be saved in file"), 0);
        return logged("ERR");
    }

    const std::string notSaved =
        "Date: 20150220T123456 could not be saved in file: " + path() + ". Exception occurred: ";
};

TEST_F(UnwritableDate, LeavesTheOldOneOnAFullDisk) {
    SKIP_WITHOUT_SMALL_DISK();
    const std::string folder = (root / DATE_FILE).parent_path().string();
    EXPECT_TRUE(onSmallDisk(folder, 64 * 1024, [&] {
        root.write(DATE_FILE, "20200101T000000");
        fillDisk(folder);
        SearchingDateRegister::getInstance()->registerCurrentDate();
        EXPECT_THAT(toldFailure(), AllOf(StartsWith(notSaved), HasSubstr("No space left on device")));
        EXPECT_EQ(root.read(DATE_FILE), "20200101T000000");
        EXPECT_EQ(date(), "20200101T000000");
        std::filesystem::remove(folder + "/filler");
        SearchingDateRegister::getInstance()->registerCurrentDate();
        EXPECT_EQ(date(), "20150220T123456");
    }));
}

TEST_F(UnwritableDate, LeavesNoneOnADiskThatWasFullBefore) {
    SKIP_WITHOUT_SMALL_DISK();
    const std::string folder = (root / DATE_FILE).parent_path().string();
    EXPECT_TRUE(onSmallDisk(folder, 64 * 1024, [&] {
        fillDisk(folder);
        SearchingDateRegister::getInstance()->registerCurrentDate();
        EXPECT_THAT(toldFailure(), StartsWith(notSaved));
        EXPECT_EQ(date(), "<none>");
        EXPECT_FALSE(std::filesystem::exists(path()));
    }));
}

TEST_F(UnwritableDate, IsNoDateOfTheCalendar) {
    root.write(DATE_FILE, "20200101T000000");
    for (const std::uint64_t seconds : {std::uint64_t(253402300800), ~std::uint64_t(0)}) {
        FakeKovan::reset();
        FakeKovan::setLocalTime(seconds);
        SearchingDateRegister::getInstance()->registerCurrentDate();
        EXPECT_THAT(toldFailure(),
                    StartsWith("Date: " + std::to_string(seconds) + " could not be saved in file: " + path()));
        EXPECT_EQ(root.read(DATE_FILE), "20200101T000000");
    }
    FakeKovan::setLocalTime(253402300799);
    SearchingDateRegister::getInstance()->registerCurrentDate();
    EXPECT_EQ(date(), "99991231T235959");
}

TEST_F(UnwritableDate, ThrowsForAFolderThatCannotBeMade) {
    std::filesystem::remove_all(root / "mnt");
    root.write("mnt", "a file where a folder has to be");
    EXPECT_THROW(SearchingDateRegister::getInstance()->registerCurrentDate(),
                 SearchingDateRegister::FailToOpenExistingFileException);
    EXPECT_EQ(toldFailure(), "Unable to open date register file: " + path() + "\n");
}

TEST_F(UnwritableDate, ThrowsForAReadOnlyFile) {
    root.write(DATE_FILE, "20200101T000000");
    std::filesystem::permissions(root / DATE_FILE, std::filesystem::perms(0444));
    openFoldersToAll();
    std::filesystem::permissions((root / DATE_FILE).parent_path(), std::filesystem::perms(0777));
    {
        const OrdinaryUser user;
        EXPECT_THROW(SearchingDateRegister::getInstance()->registerCurrentDate(),
                     SearchingDateRegister::FailToOpenExistingFileException);
    }
    EXPECT_EQ(root.read(DATE_FILE), "20200101T000000");
}

TEST_F(SearchingDateRegisterTest, TakesThePlaceOfAPipeAndWaitsForNobody) {
    ASSERT_EQ(mkfifo(path().c_str(), 0666), 0);
    SearchingDateRegister::getInstance()->registerCurrentDate();
    EXPECT_EQ(root.read(DATE_FILE), "19700101T000000");
}

TEST_F(SearchingDateRegisterTest, WritesThroughNoLink) {
    root.write("precious", "kept");
    std::filesystem::create_symlink(root / "precious", root / DATE_FILE);
    std::filesystem::create_symlink(root / "precious", path() + ".new");
    SearchingDateRegister::getInstance()->registerCurrentDate();
    EXPECT_EQ(root.read("precious"), "kept");
    EXPECT_EQ(root.read(DATE_FILE), "19700101T000000");
    EXPECT_TRUE(std::filesystem::is_regular_file(std::filesystem::symlink_status(root / DATE_FILE)));
}

TEST_F(SearchingDateRegisterTest, LeavesNothingBesideTheFile) {
    root.write(std::string(DATE_FILE) + ".new", "2020"); // left by a power cut
    SearchingDateRegister::getInstance()->registerCurrentDate();
    EXPECT_FALSE(std::filesystem::exists(path() + ".new"));
    EXPECT_EQ(root.read(DATE_FILE), "19700101T000000");
}

} // namespace
} // namespace DAX::Tests
