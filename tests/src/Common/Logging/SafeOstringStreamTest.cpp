#include "Common/Logging/SafeOstringStream.h"

#include <iomanip>
#include <string>

#include <gtest/gtest.h>

using DAX::Common::Logging::SafeOstringStream;

namespace {

template <class T>
std::string written(const T& value) {
    SafeOstringStream stream;
    stream << value;
    return stream.str();
}

TEST(SafeOstringStreamTest, NamesTheNullPointer) {
    EXPECT_STREQ(SafeOstringStream::NULLPTR_STR, "[nullptr]");
}

TEST(SafeOstringStreamTest, WritesANullOfAnyPointerTypeByName) {
    EXPECT_EQ(written(static_cast<const char*>(nullptr)), "[nullptr]");
    EXPECT_EQ(written(static_cast<char*>(nullptr)), "[nullptr]");
    EXPECT_EQ(written(static_cast<const unsigned char*>(nullptr)), "[nullptr]");
    EXPECT_EQ(written(static_cast<const void*>(nullptr)), "[nullptr]");
    EXPECT_EQ(written(static_cast<int*>(nullptr)), "[nullptr]");
    EXPECT_EQ(written(nullptr), "[nullptr]");
}

TEST(SafeOstringStreamTest, WritesWhatAnOutputStreamWrites) {
    char text[] = "text";
    EXPECT_EQ(written(text), "text");
    EXPECT_EQ(written("literal"), "literal");
    EXPECT_EQ(written(std::string("string")), "string");
    EXPECT_EQ(written(-5), "-5");
    EXPECT_EQ(written('c'), "c");
    EXPECT_EQ(written(1.5), "1.5");
    EXPECT_EQ(written(true), "1");
}

TEST(SafeOstringStreamTest, WritesAPointerThatIsNotNullAsAnAddress) {
    const int value = 0;
    std::ostringstream expected;
    expected << &value;

    EXPECT_EQ(written(&value), expected.str());
}

TEST(SafeOstringStreamTest, TakesManipulators) {
    SafeOstringStream stream;
    stream << std::hex << 255 << std::endl << std::setw(4) << std::setfill('0') << 1;

    EXPECT_EQ(stream.str(), "ff\n0001");
}

TEST(SafeOstringStreamTest, GoesOnAfterANull) {
    SafeOstringStream stream;
    stream << "a " << static_cast<const char*>(nullptr) << " b";

    EXPECT_EQ(stream.str(), "a [nullptr] b");
}

} // namespace
