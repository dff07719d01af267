#include <boost/serialization/optional.hpp>
#include <boost/serialization/string.hpp>
#include <boost/serialization/vector.hpp>
#include <gtest/gtest.h>

#include "DAXCommon/ServiceClientPriority.h"
#include "support/RecordEquality.h"
#include "support/SampleRecords.h"
#include "support/WireGoldens.h"

using namespace DAX;
using namespace DAX::Tests;

namespace {

TEST(CoreRecords, ParametersTravelInTheOrderOfTheirFields) {
    expectGolden("records/SearchingTransactionParameters", sampleParameters());
}

TEST(CoreRecords, ProgressTravelsWithThePercentageFirst) {
    expectGolden("records/TransactionProgress", sampleProgress<Core::TransactionProgress>(1, 50, 2.5F));
}

TEST(CoreRecords, SearchResultTravelsWithTheScopeLast) {
    expectGolden("records/SearchResult", sampleSearchResult());
}

TEST(CoreRecords, ProgressWrittenWithTheResultFirstIsReadAsWrongDataWithoutAnError) {
    const auto swapped = sampleProgress<Service::ServiceTransactionProgress>(1, 50, 2.5F);
    const auto read = std::get<0>(decode<Core::TransactionProgress>(encode(swapped)));
    EXPECT_EQ(read.progressPercent, 1);
    EXPECT_EQ(static_cast<int>(read.result), 50);
}

TEST(CoreRecords, NumbersOutsideTheEnumerationsAreKept) {
    auto progress = sampleProgress<Core::TransactionProgress>(-7, 50, boost::none);
    EXPECT_TRUE(progress == std::get<0>(decode<Core::TransactionProgress>(encode(progress))));
}

TEST(CoreRecords, EnumerationsTravelAsTheirNumbers) {
    using namespace DAXCommon;
    EXPECT_EQ(encode(UNDEFINED, OTA, OTN, USB, POSTPONE), "22 serialization::archive 18 0 1 2 3 4\n");
    EXPECT_EQ(encode(PRIORITY_NO_SESSION, PRIORITY_MAIN_APP, TRANSACTION_TYPE_DATED_SEARCH),
              "22 serialization::archive 18 -1 4 2\n");
    EXPECT_EQ(encode(Core::TRANSACTION_UNDEFINED, Core::TRANSACTION_IN_PROGRESS, Core::TRANSACTION_SUCCESS,
                     Core::TRANSACTION_FAILED),
              "22 serialization::archive 18 0 1 2 3\n");
}

} // namespace
