#include "Common/IO/SinkSerializer.h"

#include <limits>

#include <gmock/gmock.h>

#include "Common/IO/FileSink.h"
#include "serializers/binary/little_endian.h"
#include "support/TemporaryRoot.h"
#include "support/Thrown.h"

namespace DAX::Tests {
namespace {

using namespace Common::IO;
using serializers::binary::little_endian;

class SinkSerializerTest : public testing::Test {
protected:
    std::string content() {
        sink.close();
        return root.read("file");
    }

    const TemporaryRoot root;
    FileSink sink{(root / "file").string(), true};
    SinkSerializer serializer{&sink};
};

TEST_F(SinkSerializerTest, Saves) {
    EXPECT_TRUE(serializer.saving());
}

TEST_F(SinkSerializerTest, WritesOneValueAfterTheOther) {
    serializer.save<little_endian<4>>(std::uint32_t{1});
    serializer.save<little_endian<4>>(std::uint32_t{2});
    EXPECT_EQ(content(), std::string("\1\0\0\0\2\0\0\0", 8));
}

TEST_F(SinkSerializerTest, WritesAtItsOwnPlaceWhereverTheSinkStands) {
    serializer.save<little_endian<4>>(std::uint32_t{1});
    sink.seek(2);
    serializer.save<little_endian<4>>(std::uint32_t{2});
    EXPECT_EQ(content(), std::string("\1\0\0\0\2\0\0\0", 8));
}

TEST_F(SinkSerializerTest, RefusesAValueThatDoesNotFit) {
    EXPECT_THROW(serializer.save<little_endian<4>>(std::uint64_t{4294967296}), serializers::lossy_conversion);
    EXPECT_EQ(thrownDescription<IOExceptions::NotOpenedException>([&] { sink.close(); }), "<no such text>");
}

// Accepts every piece, as if it was written.
class Counter : public ISerializer {
public:
    bool saving() override { return true; }
    std::vector<streamsize_t> positions;

protected:
    void serializeDataImpl(streamsize_t position, std::uint8_t*, std::size_t) override {
        positions.push_back(position);
    }
};

TEST(ISerializer, CountsItsBytesAndKeepsTheCountWhenItWouldOverflow) {
    Counter counter;
    const std::size_t most = std::numeric_limits<std::size_t>::max();
    counter.serializeData(nullptr, 3);
    counter.serializeData(nullptr, most - 3);
    EXPECT_EQ(thrownText<Common::Utils::errinfo_stream_text>([&] { counter.serializeData(nullptr, 2); }),
              "numeric overflow:18446744073709551615+2");
    counter.serializeData(nullptr, 0);
    EXPECT_THAT(counter.positions, testing::ElementsAre(0, 3, most, most));
}

} // namespace
} // namespace DAX::Tests
