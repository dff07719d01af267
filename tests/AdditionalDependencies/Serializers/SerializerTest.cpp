#include <algorithm>
#include <iterator>
#include <limits>
#include <vector>

#include <boost/exception/get_error_info.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "serializers/binary/ISerializer.h"
#include "serializers/binary/little_endian.h"
#include "support/CompilerText.h"

namespace DAX::Tests {
namespace {

using serializers::lossy_conversion;
using serializers::serialization_exception;
using serializers::binary::little_endian;
using testing::ElementsAre;
using testing::IsEmpty;

class Serializer : public serializers::binary::ISerializer {
public:
    explicit Serializer(bool saving, std::vector<std::uint8_t> content = {})
        : bytes(std::move(content)), m_saving(saving) {}

    bool saving() override { return m_saving; }
    void serializeData(std::uint8_t* data, std::size_t size) override {
        if (m_saving) {
            std::copy_n(data, size, std::back_inserter(bytes));
        } else {
            std::copy_n(bytes.begin(), size, data);
        }
    }

    std::vector<std::uint8_t> bytes;

private:
    const bool m_saving;
};

// The number of bytes that the exception of a lossy conversion names; 0 when the value fits.
template <std::size_t N, class T>
T bytesThatDoNotHold(T value) {
    Serializer serializer(true);
    try {
        serializer.save<little_endian<N>>(value);
        return 0;
    } catch (const lossy_conversion& exception) {
        EXPECT_THAT(serializer.bytes, IsEmpty());
        using Tag = serializers::binary::detail::tag_cant_store_type_in_this_number_of_bytes;
        return *boost::get_error_info<boost::error_info<Tag, T>>(exception);
    }
}

TEST(Serializer, SavesTheLowByteFirst) {
    Serializer serializer(true);
    serializer.save<little_endian<4>>(std::uint32_t{0x04030201});
    serializer.save<little_endian<8>>(std::uint64_t{5});
    EXPECT_THAT(serializer.bytes, ElementsAre(1, 2, 3, 4, 5, 0, 0, 0, 0, 0, 0, 0));
}

TEST(Serializer, LoadsTheLowByteFirst) {
    Serializer serializer(false, {1, 2, 3, 4, 5, 6, 7, 8});
    std::uint32_t four = 0;
    serializer.load<little_endian<4>>(four);
    EXPECT_EQ(four, 0x04030201U);
    std::uint64_t eight = 0;
    serializer.load<little_endian<8>>(eight);
    EXPECT_EQ(eight, 0x0807060504030201U);
}

TEST(Serializer, KeepsAllBitsOfWhatFits) {
    Serializer serializer(true);
    serializer.save<little_endian<4>>(std::uint64_t{4294967295});
    EXPECT_THAT(serializer.bytes, ElementsAre(0xff, 0xff, 0xff, 0xff));
}

TEST(Serializer, RefusesWhatDoesNotFit) {
    EXPECT_EQ(bytesThatDoNotHold<4>(std::uint64_t{4294967295}), 0U);
    EXPECT_EQ(bytesThatDoNotHold<4>(std::uint64_t{4294967296}), 4U);
    EXPECT_EQ(bytesThatDoNotHold<4>(std::numeric_limits<std::uint64_t>::max()), 4U);
    EXPECT_EQ(bytesThatDoNotHold<8>(std::numeric_limits<std::uint64_t>::max()), 0U);
    EXPECT_EQ(bytesThatDoNotHold<8>(std::uint8_t{255}), 0U);
}

TEST(Serializer, RefusesToLoadWhatTheValueCannotHold) {
    Serializer serializer(false, {1, 0, 0, 0, 0, 0, 0, 1});
    std::uint32_t value = 7;
    EXPECT_THROW(serializer.load<little_endian<8>>(value), lossy_conversion);
    EXPECT_EQ(value, 7U);
}

TEST(Serializer, SerializesInItsDirection) {
    Serializer saving(true);
    std::uint32_t value = 258;
    saving.serialize<little_endian<4>>(value);
    EXPECT_EQ(value, 258U);
    EXPECT_THAT(saving.bytes, ElementsAre(2, 1, 0, 0));
    Serializer loading(false, {3, 0, 0, 0});
    loading.serialize<little_endian<4>>(value);
    EXPECT_EQ(value, 3U);
}

// The description and the function in the exception that the statement throws.
template <class Statement>
std::vector<std::string> failureOf(const Statement& statement) {
    try {
        statement();
    } catch (const serialization_exception& exception) {
        return {*boost::get_error_info<serializers::errinfo_description>(exception),
                *boost::get_error_info<boost::throw_function>(exception)};
    }
    return {};
}

TEST(Serializer, DoesNotSaveWhereItLoads) {
    Serializer loading(false, {1, 2, 3, 4});
    EXPECT_THAT(failureOf([&] { loading.save<little_endian<4>>(std::uint64_t{1}); }),
                ElementsAre("Can't save to a loading serializer.",
                            compilerText("save<serializers::binary::little_endian<4>, long unsigned int>",
                                         "save<serializers::binary::little_endian<4>, unsigned long>")));
}

TEST(Serializer, DoesNotLoadWhereItSaves) {
    Serializer saving(true);
    std::uint64_t value = 1;
    EXPECT_THAT(failureOf([&] { saving.load<little_endian<8>>(value); }),
                ElementsAre("Can't load from a saving serializer.",
                            compilerText("load<serializers::binary::little_endian<8>, long unsigned int>",
                                         "load<serializers::binary::little_endian<8>, unsigned long>")));
    EXPECT_EQ(value, 1U);
}

TEST(Serializer, HasOneRootForItsExceptions) {
    EXPECT_TRUE((std::is_base_of<std::exception, serialization_exception>::value));
    EXPECT_TRUE((std::is_base_of<boost::exception, serialization_exception>::value));
    EXPECT_TRUE((std::is_base_of<serialization_exception, lossy_conversion>::value));
}

} // namespace
} // namespace DAX::Tests
