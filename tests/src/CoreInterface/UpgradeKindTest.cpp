#include "UpgradeKind.h"

#include <gtest/gtest.h>

#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/ArchiveInput.h"
#include "support/SampleRecords.h"
#include "support/Thrown.h"
#include "support/WireGoldens.h"

using namespace DAX;
using namespace DAX::Tests;
using DAX::DAXCommon::UpgradeKind;

namespace {

std::string saved(UpgradeKind kind) {
    std::ostringstream bytes;
    {
        boost::archive::text_oarchive archive(bytes);
        DAXCommon::saveUpgradeKind(archive, kind);
    }
    return bytes.str();
}

UpgradeKind loaded(const std::string& number) {
    std::istringstream bytes("22 serialization::archive 18 " + number);
    DAXIPC::DBUSLowLevel::ArchiveInput input(bytes);
    auto kind = UpgradeKind(77);
    DAXCommon::loadUpgradeKind(input.archive(), kind);
    return kind;
}

template <class Load>
std::string refusalOf(Load load) {
    return thrownText<Common::Utils::errinfo_stream_text>(load);
}

TEST(UpgradeKind, TravelsAsABareNumber) {
    EXPECT_EQ(saved(DAXCommon::UPGRADE_KIND_IMPORTANT), golden("records/UpgradeKind"));
    EXPECT_EQ(loaded("1"), DAXCommon::UPGRADE_KIND_IMPORTANT);
    EXPECT_EQ(loaded("0"), DAXCommon::UPGRADE_KIND_REGULAR);
}

TEST(UpgradeKind, IsHeldInThirtyTwoBits) {
    EXPECT_EQ(sizeof(UpgradeKind), 4U);
}

TEST(UpgradeKind, IsSavedByItsLowEightBits) {
    EXPECT_EQ(saved(UpgradeKind(0x10002)), "22 serialization::archive 18 2\n");
    EXPECT_EQ(saved(UpgradeKind(0xFFFFFFFF)), "22 serialization::archive 18 255\n");
}

TEST(UpgradeKind, IsLoadedByTheLowEightBitsOfAnUnsignedShort) {
    EXPECT_EQ(loaded("257"), DAXCommon::UPGRADE_KIND_IMPORTANT);
    EXPECT_EQ(loaded("65280"), DAXCommon::UPGRADE_KIND_REGULAR);
    EXPECT_THROW(loaded("65536"), boost::archive::archive_exception);
}

TEST(UpgradeKind, RefusesAnyOtherValueAndNamesItByOneCharacter) {
    EXPECT_EQ(refusalOf([] { loaded("2"); }), "Invalid UpgradeKind value: \x02");
    EXPECT_EQ(refusalOf([] { loaded("65"); }), "Invalid UpgradeKind value: A");
    EXPECT_EQ(refusalOf([] { loaded("511"); }), "Invalid UpgradeKind value: \xFF");
}

TEST(UpgradeKind, StopsTheLoadOfASearchResultAtAValueOfTwo) {
    Core::SearchResult result = sampleSearchResult();
    result.kind = UpgradeKind(2);
    std::istringstream bytes(encode(result));
    DAXIPC::DBUSLowLevel::ArchiveInput input(bytes);
    Core::SearchResult read;
    EXPECT_EQ(refusalOf([&] { input >> read; }), "Invalid UpgradeKind value: \x02");
    EXPECT_TRUE(read.upgradeId.empty());
    std::string rest;
    std::getline(bytes, rest);
    EXPECT_EQ(rest, " 2 0 1 255 0 1 1 4 18.1 4 0 60 117 47 62 2");
}

} // namespace
