#include "Utility/Utils/SafePlus.h"

#include <limits>

#include <boost/exception/get_error_info.hpp>
#include <gtest/gtest.h>

using namespace DAX::Common::Utils;

namespace {

constexpr unsigned long LARGEST = std::numeric_limits<unsigned long>::max();

TEST(SafePlusTest, AddsWhatFits) {
    EXPECT_EQ(safePlus<unsigned long>(2, 3), 5u);
    EXPECT_EQ(safePlus<unsigned long>(LARGEST - 1, 1), LARGEST);
}

TEST(SafePlusTest, AddsNothingToTheLargestValue) {
    EXPECT_EQ(safePlus<unsigned long>(LARGEST, 0), LARGEST);
    EXPECT_EQ(safePlus<unsigned long>(0, LARGEST), LARGEST);
}

TEST(SafePlusTest, ThrowsWithBothValuesWhenTheSumWraps) {
    try {
        safePlus<unsigned long>(LARGEST, 1);
        FAIL();
    } catch (const GenericException& exception) {
        EXPECT_EQ(*boost::get_error_info<errinfo_stream_text>(exception),
                  "numeric overflow:" + std::to_string(LARGEST) + "+1");
    }
}

} // namespace
