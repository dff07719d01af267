#include <filesystem>
#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Platform/Product/IProductInfo.h"
#include "support/FakeKovan.h"
#include "support/OrdinaryUser.h"
#include "support/TemporaryRoot.h"
#include "support/Thrown.h"

namespace DAX::Tests {
namespace {

using Platform::IProductInfo;
using testing::ElementsAre;
using testing::Pair;

const char NO_VERSION[] = "Could not get kovan version from /etc/kovan-release file";

class KovanVersionTest : public testing::Test {
protected:
    void release(const std::string& text) const { root.write("etc/kovan-release", text); }

    // Whether there is a version, and its two numbers.
    static std::pair<bool, std::pair<int, int>> numbers() {
        std::uint16_t major = 77;
        std::uint16_t minor = 77;
        const bool found = IProductInfo::getKovanVersion(major, minor);
        return {found, {major, minor}};
    }

    const TemporaryRoot root{TemporaryRoot::SAME_FOR_ALL};
};

TEST_F(KovanVersionTest, FollowsTheEqualsSignOfTheVersion) {
    release("NAME=Kovan\nKOVAN_VERSION=8.0.1=x\nVERSION=9\n");
    EXPECT_EQ(IProductInfo::getKovanVersionString(), "8.0.1=x");
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log INF Kovan version is: 8.0.1=x"));
}

TEST_F(KovanVersionTest, SkipsALineWithoutAnEqualsSign) {
    release("VERSION 7.0\nVERSION=8.0.1");
    EXPECT_EQ(IProductInfo::getKovanVersionString(), "8.0.1");
}

TEST_F(KovanVersionTest, IsReadAfresh) {
    release("VERSION=8.0.1\n");
    IProductInfo::getKovanVersionString();
    release("VERSION=9.0.1\n");
    EXPECT_EQ(IProductInfo::getKovanVersionString(), "9.0.1");
}

TEST_F(KovanVersionTest, IsMissingWithoutTheFile) {
    EXPECT_EQ(thrownDescription(IProductInfo::getKovanVersionString), NO_VERSION);
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log ERR Unable to locate kovan_release file"));
}

TEST_F(KovanVersionTest, IsMissingInAFileThatCannotBeRead) {
    release("VERSION=8.0.1\n");
    std::filesystem::permissions(root.path(), std::filesystem::perms::all);
    std::filesystem::permissions(root / "etc/kovan-release", std::filesystem::perms::none);
    const OrdinaryUser user;
    EXPECT_EQ(thrownDescription(IProductInfo::getKovanVersionString), NO_VERSION);
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log ERR Unable to read kovan_release file"));
}

TEST_F(KovanVersionTest, IsMissingInAFileWithoutItsLine) {
    release("NAME=Kovan\nVERSION 8.0\nVERSIO=8.0\nversion=8.0\n");
    EXPECT_EQ(thrownDescription(IProductInfo::getKovanVersionString), NO_VERSION);
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log ERR Unable to parse kovan version from file"));
}

TEST_F(KovanVersionTest, IsMissingWhenItIsEmpty) {
    release("VERSION=\nVERSION=8.0.1\n");
    EXPECT_EQ(thrownDescription(IProductInfo::getKovanVersionString), NO_VERSION);
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log INF Kovan version is: "));
}

TEST_F(KovanVersionTest, HasItsFirstTwoNumbers) {
    release("VERSION=8.05.1\n");
    EXPECT_THAT(numbers(), Pair(true, Pair(8, 5)));
    release("VERSION=10.2.\n");
    EXPECT_THAT(numbers(), Pair(true, Pair(10, 2)));
}

TEST_F(KovanVersionTest, HasNoMinorNumberWithoutASecondPoint) {
    release("VERSION=8.0\n");
    EXPECT_THAT(numbers(), Pair(false, Pair(8, 0)));
}

TEST_F(KovanVersionTest, HasNoNumbersWithoutAPoint) {
    release("VERSION=8\n");
    EXPECT_THAT(numbers(), Pair(false, Pair(0, 0)));
}

TEST_F(KovanVersionTest, ThrowsForAPartThatIsNoNumber) {
    for (const std::string version : {"x.1.2", "8.x.2", ".1.2", "8..2"}) {
        release("VERSION=" + version);
        EXPECT_THROW(numbers(), std::invalid_argument) << version;
    }
    release("VERSION=99999999999.1.2");
    EXPECT_THROW(numbers(), std::out_of_range);
}

TEST_F(KovanVersionTest, KeepsTheMajorNumberWhenTheMinorOneIsNone) {
    release("VERSION=8.x.2");
    std::uint16_t major = 77;
    std::uint16_t minor = 77;
    EXPECT_THROW(IProductInfo::getKovanVersion(major, minor), std::invalid_argument);
    EXPECT_EQ(major, 8);
    EXPECT_EQ(minor, 0);
}

TEST_F(KovanVersionTest, HasNoNumbersWhenItIsMissing) {
    std::uint16_t major = 77;
    std::uint16_t minor = 77;
    EXPECT_EQ(thrownDescription([&] { IProductInfo::getKovanVersion(major, minor); }), NO_VERSION);
    EXPECT_EQ(major, 0);
    EXPECT_EQ(minor, 0);
}

} // namespace
} // namespace DAX::Tests
