#include "Utility/Utils/Hexadecimal.h"

#include <vector>

#include <gtest/gtest.h>

namespace DAX::Tests {
namespace {

using Bytes = std::vector<unsigned char>;
using Common::Utils::fromHexadecimal;
using Common::Utils::toHexadecimal;

TEST(Hexadecimal, HasTwoSmallDigitsForEachByte) {
    EXPECT_EQ(toHexadecimal(Bytes{0x00, 0x09, 0xa0, 0x5f, 0xff}), "0009a05fff");
    EXPECT_EQ(toHexadecimal(std::string("\x80\x7f")), "807f");
    EXPECT_EQ(toHexadecimal(Bytes{}), "");
}

TEST(Hexadecimal, IsReadAsItIsWritten) {
    EXPECT_EQ(fromHexadecimal<Bytes>("0009a05fff"), (Bytes{0x00, 0x09, 0xa0, 0x5f, 0xff}));
    EXPECT_EQ(fromHexadecimal<std::string>("807f"), "\x80\x7f");
    EXPECT_EQ(fromHexadecimal<Bytes>(""), Bytes{});
}

TEST(Hexadecimal, IsNothingElse) {
    for (const char* const text : {"0", "000", "0g", "0A", "0x", " 0", "0-"}) {
        EXPECT_EQ(fromHexadecimal<Bytes>(text), std::nullopt) << text;
    }
}

} // namespace
} // namespace DAX::Tests
