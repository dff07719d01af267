#include "monitor/Conversation.h"

#include <gmock/gmock.h>
#include <malloc.h>
#include <nlohmann/json.hpp>

#include "clients/monitor/Messages.h"
#include "monitor/Summary.h"
#include "monitor/Values.h"
#include "support/Sanitizer.h"
#include "support/ServiceContract.h"

namespace DAX::Tests {
namespace {

using namespace testing;
using namespace monitor;

// Nothing under a sanitizer, whose allocator does not count.
std::size_t heapInUse() {
    const auto heap = ::mallinfo2();
    return heap.uordblks + heap.hblkhd;
}

class ConversationTest : public Test {
protected:
    // A call and its normal reply.
    void exchange(const std::string& method, const std::string& request, const std::string& result,
                  bool toCore = false) {
        conversation.take(bus.call(method, request, toCore));
        conversation.take(bus.reply("REPLY", method, result));
    }

    // A client gets the service and its session's connection says hello.
    void openSession() {
        exchange("getService", H + " 4 7 updater 2 2 s1 4 :1.6", H + " 4 name\n");
        bus.speakAs(":1.6");
        exchange("helloMessage", H + " 2 s1", H + "\n");
    }

    BusStory bus;
    ProcessOfEach processes;
    KeptEvents events;
    Conversation conversation{events, processes};
};

TEST_F(ConversationTest, DecodesEveryMethodOfTheService) {
    for (const ServiceMethod& method : serviceMethods()) {
        exchange(method.name, golden("service/" + method.name + ".request"),
                 golden("service/" + method.name + ".reply"));
    }
    ASSERT_THAT(events.calls, SizeIs(23));
    ASSERT_THAT(events.answers, SizeIs(23));
    for (std::size_t i = 0; i < 23; ++i) {
        const std::string& name = serviceMethods()[i].name;
        const auto& [call, answer] = events.answers[i];
        const auto* method = DAXIPC::DBUSLowLevel::findMethod(Side::SERVICE, name);
        EXPECT_EQ(call.method, name);
        EXPECT_TRUE(call.isKnown) << name;
        EXPECT_FALSE(call.arguments.breakage) << name;
        EXPECT_EQ(call.arguments.values.size(), method->request.fields.size()) << name;
        EXPECT_EQ(answer.outcome, Outcome::DONE) << name;
        EXPECT_EQ(answer.result.values.size(), method->reply.fields.size()) << name;
        EXPECT_EQ(answer.hasArchive, method->reply.exists) << name;
    }
}

TEST_F(ConversationTest, DecodesEveryMethodOfTheCore) {
    for (const auto& method : DAXIPC::DBUSLowLevel::methodsOf(Side::CORE)) {
        exchange(method.name, golden("core/" + method.name + ".request"), golden("core/" + method.name + ".reply"),
                 true);
        EXPECT_EQ(events.answers.back().first.side, Side::CORE);
        EXPECT_EQ(events.answers.back().second.outcome, Outcome::DONE) << method.name;
        EXPECT_EQ(events.answers.back().second.result.values.size(), method.reply.fields.size()) << method.name;
    }
}

TEST_F(ConversationTest, KnowsAClientByTheNameOfItsLock) {
    exchange("acquireExternalLock", H + " 1 a 7", H + " 1\n");
    exchange("getCurrentVersion", H, H + " 4 1000\n");
    EXPECT_EQ(events.calls.back().caller.client, "a");
}

TEST_F(ConversationTest, TellsTheLatencyFromTheCallToItsAnswer) {
    bus.pace = 2500;
    exchange("getCurrentVersion", H, H + " 4 1000\n");
    EXPECT_EQ(events.answers[0].second.latency, 2500);
    EXPECT_EQ(valuesAsText(events.answers[0].second.result.values, 80), "version=\"1000\"");
}

TEST_F(ConversationTest, KnowsTheSessionOfEachConnectionByItsHello) {
    openSession();
    exchange("startNewTransaction", H + " 2 2 t1 4 :1.7", H + " 4 name\n");
    bus.speakAs(":1.7");
    exchange("helloMessage", H + " 2 t1", H + "\n");
    exchange("startSearching", H + " 0 ", "");
    EXPECT_EQ(events.calls[1].session, "s1");
    EXPECT_EQ(events.calls[2].transaction, "t1");
    EXPECT_EQ(events.calls[3].session, "s1");
    const CallEvent& search = events.calls[4];
    EXPECT_EQ(search.caller.connection, ":1.7");
    EXPECT_EQ(search.caller.client, "updater");
    EXPECT_EQ(search.session, "s1");
    EXPECT_EQ(search.transaction, "t1");
}

TEST_F(ConversationTest, NamesTheTransactionAtTheCore) {
    exchange("createTransaction", H + " 0 0 2 2 1 0 7 Proxy-2 4 :1.2", H + " 4 name\n", true);
    bus.speakAs(":1.8");
    exchange("helloMessage", H + " 7 Proxy-2", "", true);
    exchange("startSearching", H + " 0 ", "", true);
    EXPECT_EQ(events.calls[2].transaction, "Proxy-2");
}

TEST_F(ConversationTest, TellsOfARefusal) {
    exchange("getService", H + " 4 7 updater 2 2 s1 4 :1.6", H + " 0 \n");
    EXPECT_EQ(events.answers[0].second.outcome, Outcome::REFUSED);
    exchange("getClientPriority", H, H + " 4\n");
    EXPECT_EQ(events.calls[1].session, "");
}

TEST_F(ConversationTest, TellsAnExceptionByNameSupportCodeAndTheTextNearestToTheCause) {
    const std::string diagnostic =
        "file.cpp(7): Throw in function f\n[DAX::Common::Utils::tag_errinfo_stream*] = It is broken.\n";
    conversation.take(bus.call("startInstallation", H + " 0 0 0 0"));
    conversation.take(bus.reply("EXCEPTION", "CUSBReadError",
                                H + " 3 U-7 " + std::to_string(diagnostic.size()) + " " + diagnostic + " 0 0\n"));
    const AnswerEvent& answer = events.answers[0].second;
    EXPECT_EQ(answer.outcome, Outcome::FAILED);
    EXPECT_FALSE(answer.isBusError);
    EXPECT_EQ(answer.failure, "CUSBReadError");
    EXPECT_EQ(answer.supportCode, "U-7");
    EXPECT_EQ(answer.text, "It is broken.");
}

TEST_F(ConversationTest, TellsAnErrorOfTheBus) {
    conversation.take(bus.call("getSearchResult", H));
    conversation.take(bus.error("org.freedesktop.DBus.Error.NoReply", "Message recipient disconnected"));
    EXPECT_EQ(events.answers[0].second.outcome, Outcome::FAILED);
    EXPECT_TRUE(events.answers[0].second.isBusError);
    EXPECT_EQ(events.answers[0].second.failure, "org.freedesktop.DBus.Error.NoReply");
    EXPECT_EQ(events.answers[0].second.text, "Message recipient disconnected");
}

TEST_F(ConversationTest, TellsWhereAnArchiveBreaks) {
    exchange("acquireExternalLock", H + " 1 a high", H + " x\n");
    EXPECT_EQ(events.calls[0].arguments.breakage->field, "priority");
    EXPECT_EQ(events.answers[0].second.outcome, Outcome::BROKEN);
    EXPECT_EQ(events.answers[0].second.result.breakage->field, "lockId");
}

TEST_F(ConversationTest, ShowsAMethodThatDoesNotExistWithoutItsArguments) {
    exchange("stopTransaction", H + " 1 a", "");
    EXPECT_FALSE(events.calls[0].isKnown);
    EXPECT_THAT(events.calls[0].arguments.values, IsEmpty());
}

TEST_F(ConversationTest, TellsWhoGetsAndLosesTheNames) {
    conversation.take(bus.ownerChanged("org.kovan.tv.dax.core.TV", ":1.9", ""));
    conversation.take(bus.ownerChanged("org.kovan.tv.dax.service.servicemanager", "", ":1.10"));
    conversation.take(bus.ownerChanged("org.example.other", "", ":1.11"));
    ASSERT_THAT(events.owners, SizeIs(2));
    EXPECT_EQ(events.owners[0].side, Side::CORE);
    EXPECT_EQ(events.owners[0].to, "");
    EXPECT_EQ(events.owners[1].side, Side::SERVICE);
    EXPECT_EQ(events.owners[1].to, ":1.10");
}

TEST_F(ConversationTest, BelievesOnlyTheBusThatSomebodyHasGone) {
    conversation.take(bus.ownerChanged("org.kovan.tv.dax.core.TV", ":1.9", "", ":1.66"));
    EXPECT_THAT(events.owners, IsEmpty());
}

TEST_F(ConversationTest, TellsWhichSessionEndsWithItsClient) {
    openSession();
    conversation.take(bus.ownerChanged(":1.6", ":1.6", ""));
    conversation.take(bus.ownerChanged(":1.5", ":1.5", ""));
    conversation.take(bus.ownerChanged(":1.77", ":1.77", ""));
    ASSERT_THAT(events.owners, SizeIs(2));
    EXPECT_EQ(events.owners[0].caller.client, "updater");
    EXPECT_EQ(events.owners[0].session, "");
    EXPECT_EQ(events.owners[1].session, "s1");
}

TEST_F(ConversationTest, KnowsThatAnInvalidatedSessionIsOver) {
    openSession();
    exchange("invalidate", H + " 4 done", "");
    conversation.take(bus.ownerChanged(":1.5", ":1.5", ""));
    EXPECT_EQ(events.owners[0].session, "");
}

TEST_F(ConversationTest, KnowsThatATakeOverEndsTheSessionBefore) {
    openSession();
    bus.speakAs(":1.20");
    exchange("getService", H + " 9 5 other 2 2 s2 5 :1.21", H + " 4 name\n");
    conversation.take(bus.ownerChanged(":1.5", ":1.5", ""));
    conversation.take(bus.ownerChanged(":1.20", ":1.20", ""));
    EXPECT_EQ(events.owners[0].session, "");
    EXPECT_EQ(events.owners[1].session, "s2");
}

TEST_F(ConversationTest, FollowsCallsToAUniqueNameOfTheOwner) {
    conversation.take(bus.ownerChanged("org.kovan.tv.dax.core.TV", "", ":1.9"));
    BusMessage call = bus.call("startSearching", H + " 0 ", true);
    call.destination = ":1.9";
    call.path = "/elsewhere";
    conversation.take(call);
    ASSERT_THAT(events.calls, SizeIs(1));
    EXPECT_EQ(events.calls[0].side, Side::CORE);
}

TEST_F(ConversationTest, PassesOverWhatIsNotOfTheUpdateStack) {
    BusMessage call = bus.call("getService", H);
    call.destination = "org.example.other";
    call.path = "/org/example";
    conversation.take(call);
    conversation.take(bus.reply("REPLY", "getService", H));
    EXPECT_THAT(events.calls, IsEmpty());
    EXPECT_THAT(events.answers, IsEmpty());
}

TEST_F(ConversationTest, KnowsACallThatWantsNoAnswer) {
    BusMessage silent = bus.call("getCurrentVersion", H);
    silent.expectsReply = false;
    conversation.take(silent);
    conversation.take(bus.reply("REPLY", "getCurrentVersion", H + " 1 7\n"));
    EXPECT_FALSE(events.calls[0].expectsAnswer);
    EXPECT_THAT(events.answers, IsEmpty());
}

TEST_F(ConversationTest, BelievesTheAnswerOfTheOneThatWasAskedOnly) {
    conversation.setOwner(Side::SERVICE, ":1.2");
    conversation.take(bus.call("getCurrentVersion", H));
    BusMessage forged = bus.reply("REPLY", "getCurrentVersion", H + " 6 forged\n");
    forged.sender = ":1.66";
    conversation.take(forged);
    EXPECT_THAT(events.answers, IsEmpty());
    conversation.take(bus.reply("REPLY", "getCurrentVersion", H + " 1 7\n"));
    ASSERT_THAT(events.answers, SizeIs(1));
    EXPECT_EQ(valuesAsText(events.answers[0].second.result.values, 80), "version=\"7\"");
}

TEST_F(ConversationTest, BelievesTheAnswerOfAUniqueNameFromThatNameOnly) {
    conversation.setOwner(Side::SERVICE, ":1.2");
    BusMessage call = bus.call("getCurrentVersion", H);
    call.destination = ":1.9";
    conversation.take(call);
    conversation.take(bus.reply("REPLY", "getCurrentVersion", H + " 1 7\n"));
    EXPECT_THAT(events.answers, IsEmpty());
}

TEST_F(ConversationTest, BelievesAnybodyWhereItDoesNotKnowWhoHadTheName) {
    exchange("getCurrentVersion", H, H + " 1 7\n");
    EXPECT_THAT(events.answers, SizeIs(1));
}

TEST_F(ConversationTest, TakesAnAnswerForTheLaterOfTwoCallsWithTheSameSerial) {
    const BusMessage call = bus.call("getCurrentVersion", H);
    conversation.take(call);
    conversation.take(call);
    conversation.take(bus.reply("REPLY", "getCurrentVersion", H + " 1 7\n"));
    conversation.take(bus.reply("REPLY", "getCurrentVersion", H + " 1 7\n"));
    ASSERT_THAT(events.answers, SizeIs(1));
    EXPECT_EQ(events.answers[0].first.number, 2U);
}

TEST_F(ConversationTest, KnowsThatAServiceThatEndsTakesTheSessionWithIt) {
    openSession();
    conversation.take(bus.ownerChanged("org.kovan.tv.dax.service.servicemanager", ":1.2", ""));
    conversation.take(bus.ownerChanged(":1.5", ":1.5", ""));
    EXPECT_EQ(events.owners[1].session, "");
}

TEST_F(ConversationTest, RemembersTheBeginningOfNamesThatAreLong) {
    const std::string longName(100000, 'n');
    exchange("getService", H + " 4 100000 " + longName + " 2 2 s1 4 :1.6", H + " 4 name\n");
    EXPECT_EQ(events.calls[0].caller.client, longName.substr(0, 256));
}

// Ever new callers, sessions and calls, most of which nobody answers.
TEST(ConversationMemory, StaysFlatOverAMillionMessages) {
    ProcessOfEach processes;
    Summary summary;
    Conversation conversation(summary, processes);
    const auto storm = [&](int begin, int end) {
        for (int i = begin; i < end; ++i) {
            const std::string id = std::to_string(i);
            BusStory bus(":1." + id);
            conversation.take(bus.call("getService", H + " 4 1 a 2 " + std::to_string(id.size()) + " " + id + " 0 "));
            if (i % 4 == 0) {
                conversation.take(bus.reply("REPLY", "getService", H + " 4 name\n"));
            }
            conversation.take(bus.call("unknown" + id, H));
        }
    };
    storm(0, 40000);
    const std::size_t before = heapInUse();
    storm(40000, HAS_SANITIZER ? 80000 : 465000);
    EXPECT_LE(heapInUse(), before + before / 10);
    EXPECT_THAT(summary.toJson()["methods"], SizeIs(2));
}

// As many long arguments as the limits of one archive allow.
TEST(ConversationMemory, StaysBoundedHoweverLongTheArgumentsOfWaitingCallsAre) {
    ProcessOfEach processes;
    Summary summary;
    Conversation conversation(summary, processes);
    const std::string items = [] {
        std::string text = H + " 0 0 200 0";
        for (int i = 100; i < 300; ++i) {
            text += " 80 " + std::to_string(i) + std::string(77, 'x');
        }
        return text;
    }();
    const std::size_t before = heapInUse();
    BusStory bus;
    for (int i = 0; i < 5000; ++i) {
        conversation.take(bus.call("startInstallation", items));
    }
    EXPECT_LT(heapInUse(), before + 64 * 1024 * 1024);
    EXPECT_EQ(summary.toJson()["unanswered"], 5000);
}

} // namespace
} // namespace DAX::Tests
