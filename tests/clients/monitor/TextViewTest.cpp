#include "monitor/TextView.h"

#include <sstream>

#include <gmock/gmock.h>

#include "clients/monitor/Messages.h"
#include "monitor/Conversation.h"

namespace DAX::Tests {
namespace {

using namespace testing;
using namespace monitor;

class TextViewTest : public Test {
protected:
    std::string refusal(bool colours, std::size_t width) {
        std::ostringstream out;
        TextView view(out, colours, [width] { return width; });
        Conversation conversation(view, processes);
        conversation.take(bus.call("getService", H + " 4 1 a 2 1 s 0 "));
        conversation.take(bus.reply("REPLY", "getService", H + " 0 \n"));
        return out.str();
    }

    BusStory bus;
    ProcessOfEach processes;
};

TEST_F(TextViewTest, WritesALineForEachCallAndAnswer) {
    EXPECT_EQ(refusal(false, 0),
              "     0.000000 service #1    > getService  priority=4 clientName=\"a\" transactionType=2 sessionId=\"s\" "
              "connectionId=\"\"  by :1.5 updater[42] \"a\"  [session s]\n"
              "     0.001000 service #1    < getService  REFUSED  after 1.000 ms\n");
}

TEST_F(TextViewTest, IndentsWhatDoesNotFitIntoALineOfTheTerminal) {
    EXPECT_EQ(refusal(false, 80), "     0.000000 service #1    > getService  priority=4 clientName=\"a\"\n"
                                  "                      transactionType=2 sessionId=\"s\" connectionId=\"\"  by :1.5\n"
                                  "                      updater[42] \"a\"  [session s]\n"
                                  "     0.001000 service #1    < getService  REFUSED  after 1.000 ms\n");
}

TEST_F(TextViewTest, ColoursCallsAndRefusals) {
    const std::string shown = refusal(true, 80);
    EXPECT_THAT(shown, HasSubstr(" service \x1b[36m#1    > getService\x1b[0m  priority=4"));
    EXPECT_THAT(shown, HasSubstr(" service \x1b[33m#1    < getService\x1b[0m  REFUSED"));
}

TEST_F(TextViewTest, ColoursFailures) {
    std::ostringstream out;
    TextView view(out, true, [] { return 0; });
    Conversation conversation(view, processes);
    conversation.take(bus.call("startModelsSearching", H));
    conversation.take(bus.reply("EXCEPTION", "CWrongKeys", H + " 0  0  0 0\n"));
    EXPECT_THAT(out.str(),
                EndsWith("\x1b[31m#1    < startModelsSearching\x1b[0m  FAILED  CWrongKeys  after 1.000 ms\n"));
}

TEST_F(TextViewTest, EndsItsColoursInATerminalThatIsVeryNarrow) {
    for (std::size_t width = 1; width < 60; ++width) {
        const std::string shown = refusal(true, width);
        EXPECT_EQ(shown.rfind("\x1b[36m", shown.find("\x1b[0m")), shown.find("\x1b[")) << width;
        EXPECT_LT(shown.rfind("\x1b[33m"), shown.rfind("\x1b[0m")) << width;
    }
}

TEST_F(TextViewTest, SendsNoEscapeSequencesOfOthersToATerminal) {
    std::ostringstream out;
    TextView view(out, false, [] { return 0; });
    Conversation conversation(view, processes);
    conversation.take(bus.ownerChanged("org.kovan.tv.dax.core.TV", ":1.9\x1b[2J", "\x1b]0;"));
    BusMessage call = bus.call("get\x1b[31m", H);
    call.sender = ":1.\x1b[5m";
    conversation.take(call);
    conversation.take(bus.call("acquireExternalLock", H + " 4 \x1b[2J 1"));
    EXPECT_THAT(out.str(), Not(HasSubstr("\x1b")));
    EXPECT_THAT(out.str(), HasSubstr("has changed hands, :1.9\\x1b[2J to \\x1b]0;"));
}

} // namespace
} // namespace DAX::Tests
