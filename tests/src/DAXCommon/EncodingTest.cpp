#include "DAXCommon/Encoding.h"

#include <gtest/gtest.h>

using DAX::DAXCommon::Encoding::binToHex;

namespace {

TEST(BinToHex, WritesTwoLowerCaseDigitsForEachByteInOrder) {
    const unsigned char bytes[] = {0x00, 0x09, 0xa0, 0x5f, 0xff};
    EXPECT_EQ(binToHex(bytes, sizeof(bytes)), "0009a05fff");
}

TEST(BinToHex, OfNothingIsEmpty) {
    EXPECT_EQ(binToHex(nullptr, 0), "");
}

} // namespace
