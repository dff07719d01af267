#include <boost/lexical_cast.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Platform/Product/IProductInfo.h"
#include "support/FakeKovan.h"
#include "support/Thrown.h"

namespace DAX::Tests {
namespace {

using Common::Utils::errinfo_description;
using Common::Utils::errinfo_string;
using Platform::IProductInfo;
using testing::ElementsAre;

void setVersion(const std::string& version) {
    FakeKovan::setSystemInfo(128, version);
}

// The log lines of each split.
const char GOT[] = "log DBG parsedModelAndVersion got version string 'T-MARLOW-1703.12'";
const char REST[] = "log DBG version string: 1703.12";
const char NUMBERS[] = "log DBG version:1703.12";

TEST(SoftwareVersion, IsWhatFollowsTheLastDash) {
    setVersion("T-MARLOW-17.037.0");
    EXPECT_EQ(IProductInfo::getVersionString(), "17.037.0");
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log INF Version string: 17.037.0."));
}

TEST(SoftwareVersion, IsEmptyBehindADashAtTheEnd) {
    setVersion("MODEL-");
    EXPECT_EQ(IProductInfo::getVersionString(), "");
}

TEST(SoftwareVersion, IsMalformedWithoutADash) {
    setVersion("MODEL 17.0");
    const std::string failure = "getVersionString: Wrong string format - lack of dash";
    EXPECT_EQ(thrownDescription(IProductInfo::getVersionString), failure);
    EXPECT_EQ(thrownText<errinfo_string>(IProductInfo::getVersionString), "MODEL 17.0");
    EXPECT_THAT(FakeKovan::messages("ERR"), ElementsAre(failure + ": MODEL 17.0", failure + ": MODEL 17.0"));
    EXPECT_THAT(FakeKovan::messages("INF"), ElementsAre());
}

TEST(SoftwareVersion, IsSplitIntoModelAndNumbers) {
    setVersion("T-MARLOW-1703.12");
    EXPECT_EQ(IProductInfo::getModelString(), "T-MARLOW");
    EXPECT_EQ(IProductInfo::getMainSoftwareVersionMajor(), 1703);
    EXPECT_EQ(IProductInfo::getMainSoftwareVersionMinor(), 12);
    EXPECT_THAT(FakeKovan::journal(), ElementsAre(GOT, REST, NUMBERS, "log INF Model string: T-MARLOW.", //
                                                  GOT, REST, NUMBERS, "log INF MAJOR SW VERSION: 1703",  //
                                                  GOT, REST, NUMBERS, "log INF MINOR SW VERSION: 12"));
}

TEST(SoftwareVersion, IsReadAndSplitAnewEachTime) {
    setVersion("ONE-1.2");
    EXPECT_EQ(IProductInfo::getModelString(), "ONE");
    setVersion("OTHER-3.4");
    EXPECT_EQ(IProductInfo::getModelString(), "OTHER");
    EXPECT_EQ(IProductInfo::getMainSoftwareVersionMajor(), 3);
    EXPECT_EQ(IProductInfo::getMainSoftwareVersionMinor(), 4);
    EXPECT_THAT(FakeKovan::systemInfoReads(), ElementsAre("128", "128", "128", "128"));
}

TEST(SoftwareVersion, KeepsSixteenBitsOfItsNumbers) {
    setVersion("MODEL-65537.65538");
    EXPECT_EQ(IProductInfo::getMainSoftwareVersionMajor(), 1);
    EXPECT_EQ(IProductInfo::getMainSoftwareVersionMinor(), 2);
}

class SplitSoftwareVersion : public testing::TestWithParam<void (*)()> {};

TEST_P(SplitSoftwareVersion, IsMalformedWithoutADash) {
    setVersion("MODEL 17.0");
    EXPECT_EQ(thrownText<errinfo_description>(GetParam()),
              "getParsedModelAndVersion: Wrong string format - lack of dash");
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log DBG parsedModelAndVersion got version string 'MODEL 17.0'",
                            "log ERR parsedModelAndVersion: Wrong string format - lack of dash: MODEL 17.0"));
    EXPECT_EQ(thrownText<errinfo_string>(GetParam()), "MODEL 17.0");
}

TEST_P(SplitSoftwareVersion, CannotHaveThreeNumbers) {
    setVersion("MODEL-17.037.0");
    EXPECT_THROW(GetParam()(), boost::bad_lexical_cast);
}

INSTANTIATE_TEST_SUITE_P(Of, SplitSoftwareVersion,
                         testing::Values([] { IProductInfo::getModelString(); },
                                         [] { IProductInfo::getMainSoftwareVersionMajor(); },
                                         [] { IProductInfo::getMainSoftwareVersionMinor(); }));

} // namespace
} // namespace DAX::Tests
