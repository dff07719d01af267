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
    EXPECT_EQ(golden("records/UpgradeKind"), saved(DAXCommon::UPGRADE_KIND_IMPORTANT));
    EXPECT_EQ(DAXCommon::UPGRADE_KIND_IMPORTANT, loaded("1"));
    EXPECT_EQ(DAXCommon::UPGRADE_KIND_REGULAR, loaded("0"));
}

TEST(UpgradeKind, IsHeldInThirtyTwoBits) {
    EXPECT_EQ(4U, sizeof(UpgradeKind));
}

TEST(UpgradeKind, IsSavedByItsLowEightBits) {
    EXPECT_EQ("22 serialization::archive 18 2\n", saved(UpgradeKind(0x10002)));
    EXPECT_EQ("22 serialization::archive 18 255\n", saved(UpgradeKind(0xFFFFFFFF)));
}

TEST(UpgradeKind, IsLoadedByTheLowEightBitsOfAnUnsignedShort) {
    EXPECT_EQ(DAXCommon::UPGRADE_KIND_IMPORTANT, loaded("257"));
    EXPECT_EQ(DAXCommon::UPGRADE_KIND_REGULAR, loaded("65280"));
    EXPECT_THROW(loaded("65536"), boost::archive::archive_exception);
}

TEST(UpgradeKind, RefusesAnyOtherValueAndNamesItByOneCharacter) {
    EXPECT_EQ("Invalid UpgradeKind value: \x02", refusalOf([] { loaded("2"); }));
    EXPECT_EQ("Invalid UpgradeKind value: A", refusalOf([] { loaded("65"); }));
    EXPECT_EQ("Invalid UpgradeKind value: \xFF", refusalOf([] { loaded("511"); }));
}

TEST(UpgradeKind, OfTwoStopsTheLoadOfASearchResultThere) {
    Core::SearchResult result = sampleSearchResult();
    result.kind = UpgradeKind(2);
    std::istringstream bytes(encode(result));
    DAXIPC::DBUSLowLevel::ArchiveInput input(bytes);
    Core::SearchResult read;
    EXPECT_EQ("Invalid UpgradeKind value: \x02", refusalOf([&] { input >> read; }));
    EXPECT_TRUE(read.upgradeId.empty());
    std::string rest;
    std::getline(bytes, rest);
    EXPECT_EQ(" 2 0 1 255 0 1 1 4 18.1 4 0 60 117 47 62 2", rest);
}

} // namespace
