#include "Common/IO/CRCSink.h"

#include <random>

#include <gmock/gmock.h>

#include "FakeTransaction.h"
#include "MemoryStreams.h"

namespace DAX::Tests {
namespace {

using namespace Common::IO;
using IOExceptions::EndOfDataMarkedException;
using testing::ElementsAre;

std::uint32_t sumOf(const std::string& text) {
    CRCSink<Crc32> sink;
    sink.writeChunk(bytesOf(text), text.size());
    return sink.getCRC32();
}

TEST(CRCSink, ComputesTheCommonSum) {
    EXPECT_EQ(sumOf(""), 0U);
    EXPECT_EQ(sumOf("123456789"), 0xCBF43926U);
}

TEST(CRCSink, AgreesWithBoostOnRandomDataOfEveryLength) {
    std::mt19937 random(1);
    std::string data;
    for (std::size_t length = 0; length <= 4096; ++length) {
        boost::crc_32_type expected;
        expected.process_bytes(data.data(), data.size());
        ASSERT_EQ(sumOf(data), expected.checksum()) << length;
        data.push_back(static_cast<char>(random()));
        data[random() % data.size()] = static_cast<char>(random());
    }
}

TEST(CRCSink, SumsOverChunks) {
    CRCSink<Crc32> sink;
    sink.writeChunk(bytesOf("1234"), 4);
    sink.writeChunk(nullptr, 0);
    sink.writeChunk(bytesOf("56789"), 5);
    EXPECT_EQ(sink.getCRC32(), 0xCBF43926U);
}

TEST(CRCSink, MarksTheEndWhenItIsAskedForTheSum) {
    CRCSink<Crc32> sink;
    sink.getCRC32();
    EXPECT_TRUE(sink.endOfDataMarked());
    EXPECT_EQ(sink.getCRC32(), 0U);
    EXPECT_THROW(sink.writeChunk(bytesOf("a"), 1), EndOfDataMarkedException);
    EXPECT_THROW(sink.markEndOfData(), EndOfDataMarkedException);
}

TEST(CRCSink, SavesItsFlagAndItsRemainder) {
    CRCSink<Crc32> sink;
    sink.writeChunk(bytesOf("1234"), 4);
    FakeTransaction saving;
    sink.transactionSerialize(&saving);
    ASSERT_EQ(saving.bytes.size(), 5U);
    EXPECT_EQ(saving.bytes[0], 0);
    CRCSink<Crc32> other;
    FakeTransaction loading(saving.bytes);
    other.transactionSerialize(&loading);
    EXPECT_FALSE(other.endOfDataMarked());
    other.writeChunk(bytesOf("56789"), 5);
    EXPECT_EQ(other.getCRC32(), 0xCBF43926U);
}

TEST(CRCSink, RestoresItsEnd) {
    FakeTransaction loading({1, 0xff, 0xff, 0xff, 0xff});
    CRCSink<Crc32> sink;
    sink.transactionSerialize(&loading);
    EXPECT_TRUE(sink.endOfDataMarked());
    FakeTransaction saving;
    sink.transactionSerialize(&saving);
    EXPECT_THAT(saving.bytes, ElementsAre(1, 0xff, 0xff, 0xff, 0xff));
}

TEST(CRCSink, IsNamedAfterItsClass) {
    EXPECT_EQ(CRCSink<Crc32>().debugName(), "CRCSink");
}

} // namespace
} // namespace DAX::Tests
