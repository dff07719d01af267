#include "monitor/Summary.h"

#include <sstream>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "clients/monitor/Messages.h"
#include "monitor/Conversation.h"
#include "monitor/Sinks.h"

namespace DAX::Tests {
namespace {

using namespace testing;
using namespace monitor;

class SummaryTest : public Test {
protected:
    void exchange(const std::string& method, const std::string& request, const std::string& result) {
        conversation.take(bus.call(method, request));
        conversation.take(bus.reply("REPLY", method, result));
    }
    std::string text() const {
        std::ostringstream out;
        summary.print(out);
        return out.str();
    }

    BusStory bus;
    ProcessOfEach processes;
    Summary summary;
    Conversation conversation{summary, processes};
};

TEST_F(SummaryTest, CountsCallsRefusalsAndFailuresOfEachMethod) {
    exchange("getService", H + " 4 1 a 2 1 s 0 ", H + " 0 \n");
    exchange("getService", H + " 4 1 a 2 1 s 0 ", H + " 4 name\n");
    conversation.take(bus.call("startSearching", H + " 0 "));
    conversation.take(bus.reply("EXCEPTION", "CWrongKeys", H + " 0  0  0 0\n"));
    EXPECT_EQ(text(), "        method                          calls refused failed median ms  worst ms\n"
                      "service getService                          2       1      0     1.000     1.000\n"
                      "service startSearching                      1       0      1     1.000     1.000\n"
                      "3 calls\n");
}

TEST_F(SummaryTest, FitsIntoATerminalOf80Letters) {
    bus.pace = 60000000;
    exchange("getLastSearchingForUpgradeDate", H, H + " 0 0 0\n");
    std::istringstream lines(text());
    for (std::string line; std::getline(lines, line);) {
        EXPECT_LE(line.size(), 80U) << line;
    }
}

TEST_F(SummaryTest, CountsCallsThatWaitForTheirAnswerAndNoOthers) {
    const BusMessage call = bus.call("getCurrentVersion", H);
    conversation.take(call);
    conversation.take(call); // the serial that comes twice has one answer at most
    conversation.take(bus.reply("REPLY", "getCurrentVersion", H + " 1 7\n"));
    BusMessage silent = bus.call("getCurrentVersion", H);
    silent.expectsReply = false;
    conversation.take(silent);
    EXPECT_EQ(summary.toJson()["unanswered"], 1);
    EXPECT_THAT(text(), EndsWith("\n3 calls, 1 not answered yet\n"));
}

TEST_F(SummaryTest, CountsOnlyTheCallsThatItIsToShow) {
    SinkFilter filter(summary, {Side::SERVICE}, {});
    Conversation filtered(filter, processes);
    filtered.take(bus.call("getCurrentVersion", H));
    filtered.take(bus.call("getCurrentVersion", H, true));
    EXPECT_EQ(summary.toJson()["unanswered"], 1);
}

} // namespace
} // namespace DAX::Tests
