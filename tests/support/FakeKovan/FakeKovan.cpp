#include <gtest/gtest.h>

#include "support/FakeKovan/State.h"

namespace FakeKovan {
namespace {

class ResetBeforeEachTest : public testing::EmptyTestEventListener {
    void OnTestStart(const testing::TestInfo&) override { reset(); }
};

[[maybe_unused]] const bool registered = [] {
    testing::UnitTest::GetInstance()->listeners().Append(std::make_unique<ResetBeforeEachTest>().release());
    return true;
}();

} // namespace

State& State::get() {
    static State& state = *std::make_unique<State>().release();
    return state;
}

void reset() {
    locked([](State::Content& content) { content = State::Content(); });
}

void forgetRecords() {
    locked([](State::Content& content) {
        content.journal.clear();
        content.logLines.clear();
        content.writes.clear();
        content.reads.clear();
        content.systemInfo.reads.clear();
        content.events.clear();
    });
}

std::vector<std::string> journal() {
    return locked([](State::Content& content) { return content.journal; });
}

std::vector<std::string> journal(const std::string& kind) {
    std::vector<std::string> found;
    for (const std::string& entry : journal()) {
        if (entry == kind || entry.compare(0, kind.size() + 1, kind + " ") == 0) {
            found.push_back(entry);
        }
    }
    return found;
}

void note(const std::string& text) {
    locked([&text](State::Content& content) { content.journal.push_back(text); });
}

} // namespace FakeKovan
