#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Platform/Product/IProductInfo.h"
#include "Platform/Product/SystemInfoAPIInternalProblemException.h"
#include "support/FakeKovan.h"
#include "support/Thrown.h"

namespace DAX::Tests {
namespace {

using Platform::IProductInfo;
using Platform::SystemInfoAPIInternalProblemException;
using testing::ElementsAre;
using testing::IsEmpty;

const std::string TYPE = "com.velmora/featureconf/product.product_type";
const std::string IWB = "com.velmora/featureconf/iwb_support";

IProductInfo::EProductType typeOf(int number) {
    return static_cast<IProductInfo::EProductType>(number);
}

struct Row {
    int type;
    int platformNumber;
    const char* text;
};

class ProductType : public testing::TestWithParam<Row> {};

TEST_P(ProductType, ComesFromThePlatformsNumber) {
    FakeKovan::setSystemInfo(TYPE, GetParam().platformNumber);
    EXPECT_EQ(IProductInfo::getProductType(), typeOf(GetParam().type));
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log INF Product Type: " + std::to_string(GetParam().type)));
}

TEST_P(ProductType, HasItsText) {
    EXPECT_EQ(IProductInfo::productTypeToString(typeOf(GetParam().type)), GetParam().text);
    EXPECT_THAT(FakeKovan::journal(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(OfTheTable, ProductType,
                         testing::Values(Row{0, 0, "TV"}, Row{1, 1, "MONITOR"}, Row{2, 2, "AV"}, Row{3, 6, "AV"},
                                         Row{4, 7, "AV"}, Row{5, 3, "PROJECTOR"}, Row{6, 4, "LFD"}, Row{7, 5, "SMD"},
                                         Row{8, 9, "SPK"}, Row{9, 8, "HTV"}));

TEST(UnknownProductType, IsThatOfEveryOtherNumber) {
    for (const int number : {10, -1, 11}) {
        FakeKovan::reset();
        FakeKovan::setSystemInfo(TYPE, number);
        EXPECT_EQ(IProductInfo::getProductType(), typeOf(10));
        EXPECT_THAT(FakeKovan::journal(),
                    ElementsAre("log ERR Value " + std::to_string(number) + " can not be converted to EProductType",
                                "log INF Product Type: 10"));
    }
}

TEST(UnknownProductType, HasNoText) {
    for (const int type : {10, 11, -1}) {
        FakeKovan::reset();
        EXPECT_EQ(thrownDescription<SystemInfoAPIInternalProblemException>(
                      [=] { IProductInfo::productTypeToString(typeOf(type)); }),
                  "Unable to convert this productType value to string");
        EXPECT_THAT(FakeKovan::journal(),
                    ElementsAre("log ERR Can't convert this productType value to string: " + std::to_string(type)));
    }
}

TEST(TBMModel, IsALargeDisplayWithoutABoard) {
    FakeKovan::setSystemInfo(TYPE, 4);
    FakeKovan::setSystemInfo(IWB, false);
    EXPECT_TRUE(IProductInfo::isTBMModel());
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log INF Product Type: 6", "log INF IWB Supported: [false]."));
}

TEST(TBMModel, IsNoneWithABoard) {
    FakeKovan::setSystemInfo(TYPE, 4);
    FakeKovan::setSystemInfo(IWB, true);
    EXPECT_FALSE(IProductInfo::isTBMModel());
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log INF Product Type: 6", "log INF IWB Supported: [true]."));
}

TEST(TBMModel, IsNoneOfAnotherTypeWhateverItsBoard) {
    FakeKovan::setSystemInfo(IWB, false);
    for (const int number : {0, 6, 5, 10}) {
        FakeKovan::setSystemInfo(TYPE, number);
        EXPECT_FALSE(IProductInfo::isTBMModel()) << number;
    }
    EXPECT_THAT(FakeKovan::systemInfoReads(), ElementsAre(TYPE, TYPE, TYPE, TYPE));
}

const char UNABLE[] = "log ERR Unable to determine if this model is TBM. By default do not use TBM mode";

TEST(TBMModel, IsNoneWhenTheTypeCannotBeRead) {
    EXPECT_FALSE(IProductInfo::isTBMModel());
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log ERR Unable to read product key from system-info", UNABLE));
}

TEST(TBMModel, IsNoneWhenTheBoardCannotBeRead) {
    FakeKovan::setSystemInfo(TYPE, 4);
    EXPECT_FALSE(IProductInfo::isTBMModel());
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log INF Product Type: 6",
                                                  "log ERR Unable to read IWB support key from system-info", UNABLE));
}

} // namespace
} // namespace DAX::Tests
