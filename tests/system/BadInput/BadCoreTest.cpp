// An update core that answers with anything, seen from a client of the daemon.
#include <stdexcept>

#include "AnyValue.h"
#include "DaemonUnderTest.h"
#include "support/Corruption.h"
#include "support/WireGoldens.h"

namespace DAX::Tests {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

namespace CoreNames = DAXIPC::DBUSLowLevel::DBUSNames::DBUSCore::DBUSICore;

RawMessage replyTo(DBusMessage& call) {
    return RawMessage(dbus_message_new_method_return(&call));
}

RawMessage replyWith(DBusMessage& call, const std::vector<std::string>& arrays) {
    RawMessage reply = replyTo(call);
    for (const std::string& array : arrays) {
        appendBytes(*reply, array);
    }
    return reply;
}

// The test answers the daemon's calls to the core, one by one.
class BadCore : public DaemonUnderTest {
protected:
    // Takes the core's name, so that the simulated core is not started.
    BadCore() {
        m_core.requestName(CoreNames::CONNECTION_NAME());
        expectGoodAnswer();
        remember();
    }

    void TearDown() override {
        if (m_core.connection() != nullptr) {
            expectGoodAnswer();
        }
        DaemonUnderTest::TearDown();
    }

    std::uint32_t ask() { return m_client.send(*makeCallWith("getCurrentVersion", encode())); }
    Answer answer(std::uint32_t serial) { return answerIn(m_client.waitForReply(serial)); }

    // The daemon's next call to the core.
    RawMessage nextCall() {
        do {
            while (RawMessage message{dbus_connection_pop_message(m_core.connection())}) {
                if (dbus_message_get_type(message.get()) == DBUS_MESSAGE_TYPE_METHOD_CALL) {
                    return message;
                }
            }
        } while (dbus_connection_read_write(m_core.connection(), 20000));
        throw std::runtime_error("the daemon did not call the core");
    }

    // The client's answer to "getCurrentVersion" when the core replies with the message that `make` makes for the call.
    template <class Make>
    Answer answerWhenCore(Make make) {
        const std::uint32_t serial = ask();
        const RawMessage call = nextCall();
        m_core.send(*make(*call));
        return answer(serial);
    }

    void expectGoodAnswer() {
        const Answer good = answerWhenCore([](DBusMessage& call) {
            return replyWith(call, {"REPLY", "getCurrentVersion", encode(std::string("1000"))});
        });
        EXPECT_EQ(good, (Answer{"REPLY", "getCurrentVersion", encode(std::string("1000"))}));
    }

    static void expectUnknownException(const Answer& answer, const std::string& text) {
        EXPECT_EQ(answer.type, "EXCEPTION");
        EXPECT_EQ(answer.function, "DAXUnknownException");
        EXPECT_THAT(answer.diagnostic(), HasSubstr(text));
    }

    RawPeer m_core;
    RawPeer m_client;
};

TEST_F(BadCore, ThatRepliesNothingMeansTheEmptyVersion) {
    const Answer expected{"REPLY", "getCurrentVersion", encode(std::string())};
    EXPECT_EQ(answerWhenCore([](DBusMessage& call) { return replyTo(call); }), expected);
    EXPECT_EQ(answerWhenCore([](DBusMessage& call) { return replyWith(call, {"", ""}); }), expected);
    EXPECT_EQ(answerWhenCore([](DBusMessage& call) { return replyWith(call, {"REPLY", "x", ""}); }), expected);
}

TEST_F(BadCore, ThatRepliesOneArrayAloneIsRefused) {
    expectUnknownException(answerWhenCore([](DBusMessage& call) { return replyWith(call, {"REPLY"}); }),
                           "The reply is not made of byte arrays.");
}

TEST_F(BadCore, ThatRepliesWithOtherTypesIsRefused) {
    for (const char* const type : {"y", "b", "i", "t", "d", "s", "o", "g", "h", "v", "(ay)", "a{sv}", "as", "aay"}) {
        for (const std::size_t position : {0U, 1U, 2U}) {
            const Answer answer = answerWhenCore([&](DBusMessage& call) {
                RawMessage reply = replyWith(call, std::vector<std::string>(position, "REPLY"));
                appendAnyValue(*reply, type);
                return reply;
            });
            expectUnknownException(answer, "The reply is not made of byte arrays.");
        }
    }
}

TEST_F(BadCore, ThatRepliesWithAnErrorOfTheBusIsRefused) {
    const Answer answer = answerWhenCore(
        [](DBusMessage& call) { return RawMessage(dbus_message_new_error(&call, DBUS_ERROR_FAILED, "no way")); });
    expectUnknownException(answer, "no way");
}

TEST_F(BadCore, ThatRepliesWithABrokenArchiveIsRefused) {
    const std::string good = encode(std::string("1000"));
    std::vector<std::string> archives = changesOf(good, FEW_TELLING_BYTES);
    for (const auto& more : {cutsOf(good), tokenChangesOf(good, HUGE_LENGTHS), noise(1 << 20)}) {
        archives.insert(archives.end(), more.begin(), more.end());
    }
    for (const std::string& archive : archives) {
        for (const char* const type : {"REPLY", "EXCEPTION"}) {
            const Answer answer = answerWhenCore([&](DBusMessage& call) {
                return replyWith(call, {type, "CWrongKeys", archive});
            });
            ASSERT_TRUE(answer.isReply() || answer.function == "DAXUnknownException" || answer.function == "CWrongKeys")
                << testing::PrintToString(answer);
        }
    }
}

TEST_F(BadCore, ThatLeavesTheBusInsteadOfReplyingIsRefusedAtOnce) {
    const std::uint32_t serial = ask();
    nextCall();
    m_core.disconnect();
    expectUnknownException(answer(serial), "RemoteObjectNotAccessible");
}

TEST_F(BadCore, ThatRepliesTwiceIsHeardOnce) {
    for (int round = 0; round < 3; ++round) {
        const Answer answer = answerWhenCore([this](DBusMessage& call) {
            m_core.send(*replyWith(call, {"REPLY", "x", encode(std::string("first"))}));
            return replyWith(call, {"REPLY", "x", encode(std::string("second"))});
        });
        EXPECT_EQ(answer.archive, encode(std::string("first")));
    }
}

// The bus name for a transaction's connection also comes from the core.
TEST_F(BadCore, ThatNamesAnImpossibleConnectionIsRefused) {
    RawPeer session;
    m_client.call(*makeCallWith("getService",
                                encode(4, std::string("update app"), 2, std::string("Proxy-1"), std::string(":1.7"))));
    session.call(*makeCallWith("helloMessage", encode(std::string("Proxy-1"))));
    remember(); // now, since the session has opened the settings
    for (const std::string name : {"x", "not a name", ":1.999999", "org.example.absent", ".", "a.b\xff"}) {
        const std::uint32_t serial =
            session.send(*makeCallWith("startNewTransaction", encode(2, std::string("Proxy-2"), std::string(":1.8"))));
        m_core.send(*replyWith(*nextCall(), {"REPLY", "getCurrentVersion", encode(std::string("1000"))}));
        m_core.send(*replyWith(*nextCall(), {"REPLY", "createTransaction", encode(name)}));
        const Answer answer = answerIn(session.waitForReply(serial));
        expectUnknownException(answer, "RemoteObjectNotAccessible");
    }
}

} // namespace
} // namespace DAX::Tests
