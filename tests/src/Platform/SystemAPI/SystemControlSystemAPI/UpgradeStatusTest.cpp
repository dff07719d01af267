#include <boost/filesystem/operations.hpp>

#include "SystemControlTest.h"

namespace DAX::Tests {
namespace {

using Platform::ISystemControl;
using testing::ElementsAre;
using testing::IsEmpty;
namespace fs = std::filesystem;

// The answers are kept in the working directory.
class UpgradeStatusTest : public SystemControlTest {
protected:
    UpgradeStatusTest() : m_before(fs::current_path()) { fs::current_path(root.path()); }
    ~UpgradeStatusTest() override { fs::current_path(m_before); }

    // "<description>|<string>" of the exception that the statement throws.
    template <class Statement>
    static std::string failureOf(const Statement& statement) {
        try {
            statement();
        } catch (const Common::Utils::GenericException& exception) {
            return textOf<Common::Utils::errinfo_description>(exception) + "|" +
                   textOf<Common::Utils::errinfo_string>(exception);
        }
        return "<nothing thrown>";
    }

    static void fill(const std::string& directory) { fs::create_directories(directory + "/something"); }

private:
    const fs::path m_before;
};

const char ALREADY_SET[] = "Can't set upgrade status flag when this flag is already set.";
const char BOTH[] = "UpgradeStatusFlag is success and failed at once.";

TEST_F(UpgradeStatusTest, IsUnknownAtFirst) {
    EXPECT_EQ(ISystemControl::getUpgradeStatusFlag(), boost::none);
    EXPECT_THAT(FakeKovan::journal(), IsEmpty());
}

TEST_F(UpgradeStatusTest, IsADirectoryForEachAnswer) {
    ISystemControl::setUpgradeStatusFlag(true);
    EXPECT_TRUE(fs::is_directory("system_update_success"));
    EXPECT_FALSE(fs::exists("system_update_failed"));
    EXPECT_EQ(ISystemControl::getUpgradeStatusFlag(), true);

    ISystemControl::removeUpgradeStatusFlag();
    ISystemControl::setUpgradeStatusFlag(false);
    EXPECT_FALSE(fs::exists("system_update_success"));
    EXPECT_TRUE(fs::is_directory("system_update_failed"));
    EXPECT_EQ(ISystemControl::getUpgradeStatusFlag(), false);
    EXPECT_THAT(FakeKovan::journal(), IsEmpty());
}

TEST_F(UpgradeStatusTest, IsNotSetTwice) {
    for (const bool first : {true, false}) {
        for (const bool second : {true, false}) {
            ISystemControl::setUpgradeStatusFlag(first);
            EXPECT_EQ(thrownDescription([second] { ISystemControl::setUpgradeStatusFlag(second); }), ALREADY_SET);
            EXPECT_EQ(ISystemControl::getUpgradeStatusFlag(), first);
            EXPECT_THAT(FakeKovan::journal(), ElementsAre(std::string("log ERR ") + ALREADY_SET));
            ISystemControl::removeUpgradeStatusFlag();
            FakeKovan::forgetRecords();
        }
    }
}

TEST_F(UpgradeStatusTest, IsRefusedAtTheOperation) {
    fs::create_directory("system_update_success");
    EXPECT_THAT(siteThrownBy([] { ISystemControl::setUpgradeStatusFlag(true); }).function,
                testing::HasSubstr("UpgradeStatusDirectories::set(bool)"));
    fs::create_directory("system_update_failed");
    EXPECT_THAT(siteThrownBy(ISystemControl::getUpgradeStatusFlag).function,
                testing::HasSubstr("UpgradeStatusDirectories::get()"));
}

TEST_F(UpgradeStatusTest, IsNoFile) {
    root.write("system_update_success", "");
    root.write("system_update_failed", "");
    EXPECT_EQ(ISystemControl::getUpgradeStatusFlag(), boost::none);
    ISystemControl::removeUpgradeStatusFlag();
    EXPECT_FALSE(fs::exists("system_update_success"));
    EXPECT_FALSE(fs::exists("system_update_failed"));
}

TEST_F(UpgradeStatusTest, IsRefusedWhenBothAnswersAreThere) {
    fs::create_directory("system_update_success");
    fs::create_directory("system_update_failed");
    EXPECT_EQ(thrownDescription(ISystemControl::getUpgradeStatusFlag), BOTH);
    EXPECT_THAT(FakeKovan::journal(), ElementsAre(std::string("log ERR ") + BOTH));
    EXPECT_EQ(thrownDescription([] { ISystemControl::setUpgradeStatusFlag(true); }), BOTH);
    EXPECT_EQ(FakeKovan::count("ERR", BOTH), 2);
    ISystemControl::removeUpgradeStatusFlag();
    EXPECT_EQ(ISystemControl::getUpgradeStatusFlag(), boost::none);
}

TEST_F(UpgradeStatusTest, CannotBeSetOverAFile) {
    root.write("system_update_failed", "");
    EXPECT_EQ(failureOf([] { ISystemControl::setUpgradeStatusFlag(false); }),
              "Creating UpgradeStatusFlag directory failed.|File exists");
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log ERR Creating UpgradeStatusFlag directory failed: File exists."));
}

TEST_F(UpgradeStatusTest, CannotBeSetWhereThereIsNoDirectoryAnyMore) {
    fs::create_directory("gone");
    fs::current_path("gone");
    fs::remove(root / "gone");
    EXPECT_EQ(failureOf([] { ISystemControl::setUpgradeStatusFlag(true); }),
              "Creating UpgradeStatusFlag directory failed.|No such file or directory");
    fs::current_path(root.path());
}

TEST_F(UpgradeStatusTest, IsRemovedWhenThereIsNone) {
    ISystemControl::removeUpgradeStatusFlag();
    EXPECT_THAT(FakeKovan::journal(), IsEmpty());
}

TEST_F(UpgradeStatusTest, IsRemovedAsFarAsPossible) {
    fill("system_update_success");
    fs::create_directory("system_update_failed");
    EXPECT_EQ(failureOf(ISystemControl::removeUpgradeStatusFlag),
              "Removing UpgradeStatusFlag directory failed.|Directory not empty | Success");
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log ERR Removing UpgradeStatusFlag directories failed: Directory "
                                                  "not empty | Success."));
    EXPECT_TRUE(fs::exists("system_update_success"));
    EXPECT_FALSE(fs::exists("system_update_failed"));
}

TEST_F(UpgradeStatusTest, TellsThatTheSecondAnswerCannotBeRemoved) {
    fs::create_directory("system_update_success");
    fill("system_update_failed");
    EXPECT_EQ(failureOf(ISystemControl::removeUpgradeStatusFlag),
              "Removing UpgradeStatusFlag directory failed.|Success | Directory not empty");
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log ERR Removing UpgradeStatusFlag directories failed: Success | "
                                                  "Directory not empty."));
    EXPECT_FALSE(fs::exists("system_update_success"));
}

TEST_F(UpgradeStatusTest, HasNoVersion) {
    ISystemControl::setUpgradeVersion("1666.1");
    EXPECT_THAT(FakeKovan::journal(), IsEmpty());
    EXPECT_TRUE(fs::is_empty(root / PARTITION));
}

} // namespace
} // namespace DAX::Tests
