#include <gtest/gtest.h>

#include <boost/serialization/optional.hpp>
#include <boost/serialization/string.hpp>
#include <boost/serialization/vector.hpp>

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
    EXPECT_EQ(1, read.progressPercent);
    EXPECT_EQ(50, static_cast<int>(read.result));
}

TEST(CoreRecords, NumbersOutsideTheEnumerationsAreKept) {
    auto progress = sampleProgress<Core::TransactionProgress>(-7, 50, boost::none);
    EXPECT_TRUE(progress == std::get<0>(decode<Core::TransactionProgress>(encode(progress))));
}

} // namespace
