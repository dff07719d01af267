#include "monitor/Diagram.h"

#include <gmock/gmock.h>

#include "clients/monitor/Messages.h"
#include "monitor/Conversation.h"

namespace DAX::Tests {
namespace {

using namespace testing;
using monitor::Diagram;

class DiagramTest : public Test {
protected:
    void exchange(const std::string& method, const std::string& request, const std::string& result) {
        conversation.take(bus.call(method, request));
        conversation.take(bus.reply("REPLY", method, result));
    }

    std::string svg(Diagram::Scale scale = Diagram::Scale::COMPRESSED) const {
        std::ostringstream out;
        diagram.write(out, scale);
        return out.str();
    }

    double height(Diagram::Scale scale) const {
        const std::string text = svg(scale);
        return std::stod(text.substr(text.find("height=\"") + 8));
    }

    BusStory bus;
    ProcessOfEach processes;
    Diagram diagram;
    monitor::Conversation conversation{diagram, processes};
};

TEST_F(DiagramTest, DrawsRepeatedCallsAsOneWithTheLastResult) {
    exchange("getSearchProgress", H, H + " 0 0 1 10 0 1 0\n");
    exchange("getSearchProgress", H, H + " 0 0 1 50 0 1 0\n");
    exchange("getSearchProgress", H, H + " 0 0 2 100 0 1 0\n");
    EXPECT_THAT(svg(), HasSubstr(">getSearchProgress ×3</text>"));
    EXPECT_THAT(svg(), HasSubstr(">SUCCESS, 100 % · 1.0 ms</text>"));
    EXPECT_THAT(svg(), Not(HasSubstr("IN_PROGRESS")));
    EXPECT_THAT(svg(), HasSubstr(">0.000 – 0.004</text>"));
}

TEST_F(DiagramTest, DoesNotHideAFailureAmongRepeatedCalls) {
    exchange("getSearchProgress", H, H + " 0 0 1 10 0 1 0\n");
    conversation.take(bus.call("getSearchProgress", H));
    conversation.take(bus.reply("EXCEPTION", "CWrongKeys", H + " 0  0  0 0\n"));
    exchange("getSearchProgress", H, H + " 0 0 1 10 0 1 0\n");
    EXPECT_THAT(svg(), Not(HasSubstr("×2")));
    EXPECT_THAT(svg(), HasSubstr("class=\"small middle failed bold\""));
    EXPECT_THAT(svg(), HasSubstr(">CWrongKeys · 1.0 ms</text>"));
}

TEST_F(DiagramTest, DrawsRefusalsInAColourOfTheirOwn) {
    exchange("getService", H + " 4 1 a 2 1 s 0 ", H + " 0 \n");
    EXPECT_THAT(svg(), HasSubstr("class=\"line refused\""));
    EXPECT_THAT(svg(), HasSubstr(">refused · 1.0 ms</text>"));
}

TEST_F(DiagramTest, DrawsCallsWithoutAnAnswerDashed) {
    conversation.take(bus.call("getCurrentVersion", H));
    EXPECT_THAT(svg(), HasSubstr("class=\"line waiting\""));
    EXPECT_THAT(svg(), HasSubstr(">no answer</text>"));
}

TEST_F(DiagramTest, ExplainsAFailureBelowItsName) {
    const std::string diagnostic =
        "[DAX::Common::Utils::tag_errinfo_stream*] = It is broken, and <this> is said of it at a "
        "length that one line of a picture between two lifelines does not hold.\n";
    conversation.take(bus.call("startInstallation", H + " 0 0 0 0"));
    conversation.take(bus.reply("EXCEPTION", "CUSBReadError",
                                H + " 0  " + std::to_string(diagnostic.size()) + " " + diagnostic + " 0 0\n"));
    EXPECT_THAT(svg(), HasSubstr(">CUSBReadError · 1.0 ms</text>"));
    EXPECT_THAT(svg(), HasSubstr(">It is broken, and &lt;this&gt; is said of it at a length</text>"));
    EXPECT_THAT(svg(), HasSubstr(">that one line of a picture between two ...</text>"));
}

TEST_F(DiagramTest, WritesTheNameOfAFailureInLettersThatPrint) {
    conversation.take(bus.call("getSearchProgress", H));
    conversation.take(bus.reply("EXCEPTION", "Bad\x1b[31m\x01\xff", H + " 0  0  0 0\n"));
    EXPECT_THAT(svg(), HasSubstr(">Bad\\x1b[31m\\x01\\xff · 1.0 ms</text>"));
}

TEST_F(DiagramTest, TellsWhoHoldsTheServiceInFewWords) {
    exchange("getServiceOwner", "", H + " 1 4 3 app 2\n");
    EXPECT_THAT(svg(), HasSubstr(">\"app\", priority 4 · 1.0 ms</text>"));
    exchange("getServiceOwner", "", H + " 0 0 0  0\n");
    EXPECT_THAT(svg(), HasSubstr(">nobody · 1.0 ms</text>"));
}

TEST_F(DiagramTest, HasABarFromTheGrantUntilTheSessionEnds) {
    const auto bars = [this] {
        const std::string text = svg();
        std::size_t count = 0;
        for (std::size_t at = 0; (at = text.find("class=\"held\"", at)) != std::string::npos; ++at) {
            ++count;
        }
        return count;
    };
    exchange("getService", H + " 4 1 a 2 1 r 0 ", H + " 0 \n");
    EXPECT_EQ(bars(), 0U) << "it is refused";
    exchange("getService", H + " 4 1 a 2 1 s 0 ", H + " 4 name\n");
    EXPECT_EQ(bars(), 1U);
    bus.speakAs(":1.6");
    exchange("getService", H + " 9 1 b 2 1 t 0 ", H + " 4 name\n");
    EXPECT_EQ(bars(), 2U) << "one ends where the other begins";
    conversation.take(bus.ownerChanged(":1.5", ":1.5", ""));
    exchange("invalidate", H + " 1 x", "");
    conversation.take(bus.ownerChanged("org.kovan.tv.dax.service.servicemanager", ":1.2", ""));
    EXPECT_EQ(bars(), 2U);
}

TEST_F(DiagramTest, SaysThatACallWantsNoAnswer) {
    monitor::BusMessage silent = bus.call("getCurrentVersion", H);
    silent.expectsReply = false;
    conversation.take(silent);
    EXPECT_THAT(svg(), HasSubstr(">wants no answer</text>"));
}

TEST_F(DiagramTest, TellsTheHelloOfASessionFromThatOfATransaction) {
    exchange("getService", H + " 4 1 a 2 2 s1 0 ", H + " 4 name\n");
    exchange("helloMessage", H + " 2 s1", H + "\n");
    exchange("startNewTransaction", H + " 2 2 t1 0 ", H + " 4 name\n");
    exchange("helloMessage", H + " 2 t1", H + "\n");
    EXPECT_THAT(svg(), HasSubstr(">helloMessage of the session</text>"));
    EXPECT_THAT(svg(), HasSubstr(">helloMessage of the transaction</text>"));
}

TEST_F(DiagramTest, HasALifelineForEachClient) {
    exchange("getService", H + " 4 3 <a> 2 1 s 0 ", H + " 0 \n");
    EXPECT_THAT(svg(), HasSubstr(">&lt;a&gt;</text>"));
    EXPECT_THAT(svg(), HasSubstr(">updater 42</text>"));
    EXPECT_THAT(svg(), HasSubstr(">DAXService</text>"));
    EXPECT_THAT(svg(), HasSubstr(">update core</text>"));
}

TEST_F(DiagramTest, HasTheLifelinesInTheOrderInWhichTheClientsCome) {
    struct : monitor::Processes {
        std::optional<monitor::Process> processOf(const std::string&) override { return std::nullopt; }
    } unknown;
    monitor::Conversation other(diagram, unknown);
    for (const char* caller : {":1.9", ":1.10"}) {
        BusStory story(caller);
        other.take(story.call("getCurrentVersion", H));
    }
    const std::string text = svg();
    EXPECT_LT(text.find(">:1.9</text>"), text.find(">:1.10</text>"));
}

TEST_F(DiagramTest, LetsOneClientLeaveOnce) {
    exchange("getCurrentVersion", H, H + " 1 7\n");
    bus.speakAs(":1.6");
    exchange("getCurrentVersion", H, H + " 1 7\n");
    conversation.take(bus.ownerChanged(":1.5", ":1.5", ""));
    conversation.take(bus.ownerChanged(":1.6", ":1.6", ""));
    const std::string text = svg();
    EXPECT_EQ(text.find(">leaves<"), text.rfind(">leaves<"));
    EXPECT_NE(text.find(">leaves<"), std::string::npos);
}

TEST_F(DiagramTest, LetsAClientLeaveWithTheLastOfItsConnections) {
    exchange("getCurrentVersion", H, H + " 1 7\n");
    conversation.take(bus.ownerChanged(":1.5", ":1.5", ""));
    bus.speakAs(":1.6");
    exchange("getCurrentVersion", H, H + " 1 7\n");
    EXPECT_THAT(svg(), Not(HasSubstr(">leaves<"))) << "the process goes on";
    conversation.take(bus.ownerChanged(":1.6", ":1.6", ""));
    EXPECT_THAT(svg(), HasSubstr(">leaves<"));
}

TEST_F(DiagramTest, IsHigherToScaleWhereTimePasses) {
    bus.pace = 1000000;
    exchange("getCurrentVersion", H, H + " 1 7\n");
    exchange("getSupportedUpgradeTypes", H, H + " 0 0 0 0\n");
    EXPECT_GT(height(Diagram::Scale::TIME), height(Diagram::Scale::COMPRESSED) + 100);
}

TEST_F(DiagramTest, TellsHowMuchItHasLeftOut) {
    for (std::size_t i = 0; i < Diagram::MOST_STEPS + 3; ++i) {
        exchange(i % 2 == 0 ? "getCurrentVersion" : "getServiceOwner", H, H + " 1 7\n");
    }
    EXPECT_THAT(svg(), HasSubstr(" 3 more calls and changes are not drawn.</text>"));
}

TEST_F(DiagramTest, OfNothingIsAPictureAllTheSame) {
    EXPECT_THAT(svg(), StartsWith("<svg "));
    EXPECT_THAT(svg(), EndsWith("</svg>\n"));
}

} // namespace
} // namespace DAX::Tests
