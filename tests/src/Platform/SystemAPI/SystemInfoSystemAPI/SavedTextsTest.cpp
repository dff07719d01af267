#include "Platform/Product/SystemInfoAPIInternalProblemException.h"
#include "SystemInfoFixture.h"
#include "support/NamedRow.h"

namespace DAX::Tests {
namespace {

using Common::Utils::GenericException;
using Platform::ISystemInfo;
using Platform::SystemInfoAPIInternalProblemException;
using testing::ElementsAre;

const std::string VERSION = UPDATE_SETTINGS + "upgrade_version";

TEST(SavedVersion, IsTheOneOfTheSoftware) {
    FakeKovan::setSystemInfo(128, "T-MARLOW-1703.1");
    ISystemInfo::saveCurrentVersionString();
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log INF CSystemInfo::m_saveCurrentVersionString()", "log INF Version string: 1703.1.",
                            "write " + VERSION + "=1703.1",
                            "log INF Current version string: 1703.1 was set correctly in " + VERSION));
}

TEST(SavedVersion, ThrowsWhenItCannotBeSaved) {
    FakeKovan::setSystemInfo(128, "T-MARLOW-1703.1");
    FakeKovan::failWrites(VERSION, -9);
    EXPECT_EQ(thrownDescription(ISystemInfo::saveCurrentVersionString),
              "Cannot set save upgrade_version value in VConf.");
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log INF CSystemInfo::m_saveCurrentVersionString()", "log INF Version string: 1703.1.",
                            "write " + VERSION + "=1703.1 -> -9", failedWrite(VERSION),
                            "log ERR Cannot set value for VConf key: " + VERSION));
}

TEST(SavedVersion, ThrowsWhenTheSoftwareHasNone) {
    EXPECT_THROW(ISystemInfo::saveCurrentVersionString(), SystemInfoAPIInternalProblemException);
    FakeKovan::setSystemInfo(128, "no dash");
    EXPECT_THROW(ISystemInfo::saveCurrentVersionString(), GenericException);
    EXPECT_THAT(FakeKovan::writes(), ElementsAre());
}

TEST(SavedVersion, IsLoaded) {
    FakeKovan::setSetting(VERSION, "1703.1");
    EXPECT_EQ(ISystemInfo::loadCurrentVersionString(), "1703.1");
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log INF CSystemInfo::m_loadCurrentVersionString()",
                            "log INF Current version string: 1703.1 was get correctly from " + VERSION));
}

TEST(SavedVersion, ThrowsWhenItCannotBeLoaded) {
    EXPECT_EQ(thrownDescription(ISystemInfo::loadCurrentVersionString), "Cannot get upgrade_version from VConf.");
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log INF CSystemInfo::m_loadCurrentVersionString()", failedRead(VERSION),
                            "log ERR Cannot get the value from VConf variable: " + VERSION));
}

struct MsdText : NamedRow {
    void (*set)(const std::string&);
    std::string (*get)();
    std::string key;
    std::string failure;
};

class MsdTextTest : public testing::TestWithParam<MsdText> {};

TEST_P(MsdTextTest, IsSavedAndRead) {
    GetParam().set("a text");
    EXPECT_EQ(GetParam().get(), "a text");
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("write " + GetParam().key + "=a text"));
}

TEST_P(MsdTextTest, IsEmptyWhenItCannotBeRead) {
    EXPECT_EQ(GetParam().get(), "");
    EXPECT_THAT(FakeKovan::journal(), ElementsAre(failedReadOr(GetParam().key)));
}

TEST_P(MsdTextTest, IsLoggedWhenItCannotBeSaved) {
    FakeKovan::failWrites(GetParam().key, -9);
    EXPECT_NO_THROW(GetParam().set("a text"));
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("write " + GetParam().key + "=a text -> -9",
                                                  failedWrite(GetParam().key), "log ERR " + GetParam().failure));
}

INSTANTIATE_TEST_SUITE_P(
    Of, MsdTextTest,
    testing::Values(MsdText{"FolderPath", ISystemInfo::setMsdFolderPath, ISystemInfo::getMsdFolderPath,
                            VOLATILE_UPDATE_SETTINGS + "msd_path", "Error while saving MSD folder path string"},
                    MsdText{"Versions", ISystemInfo::setMsdVersions, ISystemInfo::getMsdVersions,
                            VOLATILE_UPDATE_SETTINGS + "msd_versions", "Error while saving MSD versions string"}),
    rowName);

} // namespace
} // namespace DAX::Tests
