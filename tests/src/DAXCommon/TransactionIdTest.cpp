#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "DAXCommon/DAXCommonUtils.h"

using namespace DAX::DAXCommon::DAXCommonUtils;

namespace {

std::vector<unsigned char> bytesOf(const std::string& text) {
    return {text.begin(), text.end()};
}

std::string crcOf(const std::string& text) {
    const std::vector<unsigned char> bytes = bytesOf(text);
    return calculateCrcString(bytes.data(), bytes.size());
}

// The sums are 0xCBF43926 and 0xE8B7BE43.
TEST(CalculateCrcString, PrintsTheLowestByteOfTheCommonCrcFirst) {
    EXPECT_EQ(crcOf("123456789"), "2639f4cb");
    EXPECT_EQ(crcOf("a"), "43beb7e8");
}

TEST(CalculateCrcString, KeepsTheZerosInFrontOfEachByte) {
    EXPECT_EQ(crcOf("kw"), "0c44b109");
}

TEST(CalculateCrcString, OfNothingIsEightZeros) {
    const unsigned char byte = 1;
    EXPECT_EQ(calculateCrcString(&byte, 0), "00000000");
    EXPECT_EQ(calculateCrcString(nullptr, 0), "00000000");
}

TEST(CalculateCrcString, TakesNoMoreBytesThanItIsTold) {
    const std::vector<unsigned char> bytes = bytesOf("123456789 and more");
    EXPECT_EQ(calculateCrcString(bytes.data(), 9), "2639f4cb");
}

TEST(GetTransactionIdForUpgrade, IsTheCrcOfItsIdentifier) {
    EXPECT_EQ(getTransactionIdForUpgrade(bytesOf("123456789")), "2639f4cb");
    EXPECT_EQ(getTransactionIdForUpgrade({0}), "8def02d2");
}

TEST(GetTransactionIdForUpgrade, IsEightZerosForAnEmptyIdentifier) {
    EXPECT_EQ(getTransactionIdForUpgrade({}), "00000000");
}

} // namespace
