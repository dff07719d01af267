#include "Service/ServiceManager/Implementation/SearchingDateRegister.h"

#include <future>

#include <boost/date_time/posix_time/time_formatters.hpp>

#include "ServiceFixture.h"
#include "support/OrdinaryUser.h"
#include "support/Thrown.h"

namespace DAX {
namespace Tests {
namespace {

using Service::ServiceManager::SearchingDateRegister;
using ::testing::ElementsAre;
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

TEST_F(SearchingDateRegisterTest, GivesTheSameObjectToAllThreads) {
    auto other = std::async(std::launch::async, &SearchingDateRegister::getInstance);
    const auto mine = SearchingDateRegister::getInstance();
    ASSERT_TRUE(mine);
    EXPECT_EQ(other.get(), mine);
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
    const auto golden = std::filesystem::path(__FILE__).parent_path() / "../../golden/io/LastSearchingDate";
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
                         ::testing::Values("", "yesterday", "20201301T000000", "20200230T000000"));

} // namespace
} // namespace Tests
} // namespace DAX
