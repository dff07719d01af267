#include "Common/IO/BranchSink.h"

#include <stdexcept>

#include <gmock/gmock.h>

#include "Common/IO/CRCSink.h"
#include "FakeTransaction.h"
#include "MemoryStreams.h"
#include "support/FakeKovan.h"

namespace DAX::Tests {
namespace {

using namespace Common::IO;
using IOExceptions::EndOfDataMarkedException;
using testing::ElementsAre;
using testing::IsEmpty;

// Notes its calls with its name, in one list with the calls of the other sinks, and fails when told to.
class NamedSink : public ISink {
public:
    explicit NamedSink(std::string name) : m_name(std::move(name)) {}

    void writeChunk(const std::uint8_t* data, std::size_t size) override {
        note("write " + std::string(data, data + size));
    }
    void markEndOfData() override { note("mark"); }
    bool endOfDataMarked() override { return false; }

    bool fails = false;

private:
    void note(const std::string& call) const {
        FakeKovan::note(m_name + ": " + call);
        if (fails) {
            throw std::runtime_error(m_name);
        }
    }

    const std::string m_name;
};

class BranchSinkTest : public testing::Test {
protected:
    // One sink that passes the end of data on, and one that does not.
    BranchSinkTest() {
        for (BranchSink* const sink : {&passing, &keeping}) {
            sink->addBranch(first);
            sink->addBranch(second);
            sink->addBranch(third);
        }
    }

    static void write(BranchSink& sink, const std::string& text) { sink.writeChunk(bytesOf(text), text.size()); }

    const std::shared_ptr<NamedSink> first = std::make_shared<NamedSink>("first");
    const std::shared_ptr<NamedSink> second = std::make_shared<NamedSink>("second");
    const std::shared_ptr<NamedSink> third = std::make_shared<NamedSink>("third");
    BranchSink passing{true};
    BranchSink keeping{false};
};

TEST_F(BranchSinkTest, GivesTheDataToEachInOrder) {
    write(passing, "abc");
    write(keeping, "de");
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("first: write abc", "second: write abc", "third: write abc",
                                                  "first: write de", "second: write de", "third: write de"));
    EXPECT_FALSE(passing.endOfDataMarked());
    EXPECT_FALSE(keeping.endOfDataMarked());
}

TEST_F(BranchSinkTest, GivesNothingToTheBranchesAfterOneThatFails) {
    second->fails = true;
    EXPECT_THROW(write(passing, "abc"), std::runtime_error);
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("first: write abc", "second: write abc"));
}

TEST_F(BranchSinkTest, MarksTheEndOnEachInOrder) {
    passing.markEndOfData();
    EXPECT_TRUE(passing.endOfDataMarked());
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("first: mark", "second: mark", "third: mark"));
}

TEST_F(BranchSinkTest, DoesNotPassTheEndOnUnlessToldTo) {
    keeping.markEndOfData();
    EXPECT_TRUE(keeping.endOfDataMarked());
    EXPECT_THAT(FakeKovan::journal(), IsEmpty());
}

TEST_F(BranchSinkTest, IsMarkedThoughABranchFails) {
    second->fails = true;
    EXPECT_THROW(passing.markEndOfData(), std::runtime_error);
    EXPECT_TRUE(passing.endOfDataMarked());
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("first: mark", "second: mark"));
}

TEST_F(BranchSinkTest, TakesNothingAfterTheEnd) {
    for (BranchSink* const sink : {&passing, &keeping}) {
        sink->markEndOfData();
        FakeKovan::reset();
        EXPECT_THROW(write(*sink, "abc"), EndOfDataMarkedException);
        EXPECT_THROW(sink->markEndOfData(), EndOfDataMarkedException);
        EXPECT_THAT(FakeKovan::journal(), IsEmpty());
    }
}

TEST_F(BranchSinkTest, SavesItsFlagAndNamesTheBranchesThatTakePart) {
    const auto crc = std::make_shared<CRCSink<Crc32>>();
    keeping.addBranch(crc);
    FakeTransaction saving;
    saving.processes = false;
    keeping.transactionSerialize(&saving);
    keeping.markEndOfData();
    keeping.transactionSerialize(&saving);
    EXPECT_THAT(saving.bytes, ElementsAre(0, 1));
    EXPECT_THAT(saving.dependencies, ElementsAre(crc.get(), crc.get()));
    keeping.transactionSaved(&saving);
    EXPECT_THAT(saving.dependencies, ElementsAre(crc.get(), crc.get(), crc.get()));
}

TEST_F(BranchSinkTest, RestoresItsFlagAndLeavesTheBranchesAlone) {
    FakeTransaction loading({1, 0});
    passing.transactionSerialize(&loading);
    EXPECT_TRUE(passing.endOfDataMarked());
    passing.transactionSerialize(&loading);
    EXPECT_FALSE(passing.endOfDataMarked());
    EXPECT_THAT(FakeKovan::journal(), IsEmpty());
}

TEST(BranchSink, IsNamedAfterItsBranches) {
    BranchSink sink(true);
    EXPECT_EQ(sink.debugName(), "BranchSink()");
    sink.addBranch(std::make_shared<CRCSink<Crc32>>());
    sink.addBranch(std::make_shared<CRCSink<Crc32>>());
    EXPECT_EQ(sink.debugName(), "BranchSink(CRCSink, CRCSink)");
}

} // namespace
} // namespace DAX::Tests
