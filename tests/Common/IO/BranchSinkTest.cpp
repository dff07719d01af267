#include "Common/IO/BranchSink.h"

#include <gmock/gmock.h>

#include "Common/IO/CRCSink.h"
#include "FakeTransaction.h"
#include "MemoryStreams.h"

namespace DAX {
namespace Tests {
namespace {

using namespace Common::IO;
using IOExceptions::EndOfDataMarkedException;
using testing::ElementsAre;

class BranchSinkTest : public testing::TestWithParam<bool> {
protected:
    BranchSinkTest() {
        sink.addBranch(first);
        sink.addBranch(second);
    }

    const std::shared_ptr<MemorySink> first = std::make_shared<MemorySink>();
    const std::shared_ptr<MemorySink> second = std::make_shared<MemorySink>();
    BranchSink sink{GetParam()};
};

TEST_P(BranchSinkTest, GivesTheDataToEachInOrder) {
    sink.writeChunk(bytesOf("abc"), 3);
    EXPECT_THAT(first->calls, ElementsAre("write abc"));
    EXPECT_THAT(second->calls, ElementsAre("write abc"));
}

TEST_P(BranchSinkTest, StopsAtTheFirstThatFails) {
    first->markEndOfData();
    EXPECT_THROW(sink.writeChunk(bytesOf("abc"), 3), EndOfDataMarkedException);
    EXPECT_EQ(second->text, "");
}

TEST_P(BranchSinkTest, MarksTheBranchesWhenItShall) {
    sink.markEndOfData();
    EXPECT_TRUE(sink.endOfDataMarked());
    EXPECT_EQ(first->endOfDataMarked(), GetParam());
    EXPECT_EQ(second->endOfDataMarked(), GetParam());
    EXPECT_THROW(sink.markEndOfData(), EndOfDataMarkedException);
    EXPECT_THROW(sink.writeChunk(bytesOf("abc"), 3), EndOfDataMarkedException);
}

TEST_P(BranchSinkTest, SavesItsFlagAndNamesTheBranchesThatTakePart) {
    const auto crc = std::make_shared<CRCSink<Crc32>>();
    sink.addBranch(crc);
    FakeTransaction saving;
    saving.processes = false;
    sink.transactionSerialize(&saving);
    EXPECT_THAT(saving.bytes, ElementsAre(0));
    EXPECT_THAT(saving.dependencies, ElementsAre(crc.get()));
    sink.transactionSaved(&saving);
    EXPECT_THAT(saving.dependencies, ElementsAre(crc.get(), crc.get()));
}

TEST_P(BranchSinkTest, RestoresItsFlag) {
    FakeTransaction loading({1});
    sink.transactionSerialize(&loading);
    EXPECT_TRUE(sink.endOfDataMarked());
    EXPECT_FALSE(first->endOfDataMarked());
}

INSTANTIATE_TEST_SUITE_P(PassingTheEndOn, BranchSinkTest, testing::Bool());

TEST(BranchSink, IsCalledByItsBranches) {
    BranchSink sink(true);
    EXPECT_EQ(sink.debugName(), "BranchSink()");
    sink.addBranch(std::make_shared<CRCSink<Crc32>>());
    sink.addBranch(std::make_shared<CRCSink<Crc32>>());
    EXPECT_EQ(sink.debugName(), "BranchSink(CRCSink, CRCSink)");
}

} // namespace
} // namespace Tests
} // namespace DAX
