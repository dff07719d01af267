#include <csignal>
#include <stdexcept>

#include <unistd.h>

#include "AdapterFixture.h"
#include "Common/DBUSWrapper/DBUSWrapperExceptions.h"
#include "LibraryFaults.h"
#include "Utility/Utils/ErrInfoStream.h"

namespace DAX::Tests {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

class CDBUSAdapterMessagesTest : public AdapterFixture {
protected:
    CDBUSAdapterMessagesTest() {
        start();
        m_client = std::make_unique<RawPeer>();
    }

    RawPeer& client() { return *m_client; }
    RawMessage call(RawMessage message) { return client().call(*message); }

    // A call that is answered in order behind everything that this client has sent before.
    void synchronize() { ASSERT_THAT(byteArrays(*call(makeCall("sync"))), ElementsAre("REPLY", "sync", "")); }

private:
    std::unique_ptr<RawPeer> m_client;
};

TEST_F(CDBUSAdapterMessagesTest, AnswersWithThreeByteArrays) {
    const RawMessage reply = call(makeCallWith("echo", "22 serialization"));
    EXPECT_STREQ(dbus_message_get_signature(reply.get()), "ayayay");
    EXPECT_THAT(byteArrays(*reply), ElementsAre("REPLY", "echo", "22 serialization"));
}

TEST_F(CDBUSAdapterMessagesTest, GivesTheHandlerMethodBytesAndSender) {
    const std::string bytes("a\0b\xff", 4);
    call(makeCallWith("echo", bytes));
    ASSERT_EQ(handler->requests().size(), 1U);
    EXPECT_EQ(handler->requests()[0].method, "echo");
    EXPECT_EQ(handler->requests()[0].input, bytes);
    EXPECT_EQ(handler->requests()[0].sender, client().name());
}

TEST_F(CDBUSAdapterMessagesTest, SendsAnEmptyThirdArrayForAnEmptyResult) {
    const RawMessage reply = call(makeCall("nothing"));
    EXPECT_STREQ(dbus_message_get_signature(reply.get()), "ayayay");
    EXPECT_THAT(byteArrays(*reply), ElementsAre("REPLY", "nothing", ""));
}

TEST_F(CDBUSAdapterMessagesTest, GivesTheHandlerAnEmptyStreamForACallWithoutArguments) {
    call(makeCall("nothing"));
    EXPECT_EQ(handler->requests().at(0).input, "");
}

TEST_F(CDBUSAdapterMessagesTest, TakesAnEmptyArray) {
    EXPECT_THAT(byteArrays(*call(makeCallWith("empty", ""))), ElementsAre("REPLY", "empty", ""));
}

TEST_F(CDBUSAdapterMessagesTest, LooksAtTheFirstArgumentOnly) {
    RawMessage message = makeCallWith("two", "first");
    const char* second = "second";
    dbus_message_append_args(message.get(), DBUS_TYPE_STRING, &second, DBUS_TYPE_INVALID);
    EXPECT_THAT(byteArrays(*call(std::move(message))), ElementsAre("REPLY", "two", "first"));
}

TEST_F(CDBUSAdapterMessagesTest, DoesNotLookAtTheInterface) {
    EXPECT_THAT(byteArrays(*call(makeCall("any", "org.example.other"))), ElementsAre("REPLY", "any", ""));
}

TEST_F(CDBUSAdapterMessagesTest, CarriesAnswersOfAMegabyte) {
    const std::string bytes(1 << 20, 'x');
    EXPECT_THAT(byteArrays(*call(makeCallWith("big", bytes))), ElementsAre("REPLY", "big", bytes));
}

TEST_F(CDBUSAdapterMessagesTest, AnswersIntrospectionWithOneString) {
    const RawMessage reply = call(makeIntrospection());
    const char* text = nullptr;
    ASSERT_TRUE(dbus_message_get_args(reply.get(), nullptr, DBUS_TYPE_STRING, &text, DBUS_TYPE_INVALID));
    EXPECT_STREQ(text, "<node/>");
    EXPECT_THAT(handler->requests(), IsEmpty());
}

TEST_F(CDBUSAdapterMessagesTest, DoesNotCountAnIntrospectionAsAClient) {
    call(makeIntrospection());
    EXPECT_EQ(FakeKovan::countContaining("INF", "Registering new connection named"), 0);
}

TEST_F(CDBUSAdapterMessagesTest, DoesNotCountOtherCallsOfTheIntrospectionInterfaceEither) {
    EXPECT_THAT(byteArrays(*call(makeCall("other", DBUS_INTERFACE_INTROSPECTABLE))), ElementsAre("REPLY", "other", ""));
    EXPECT_EQ(FakeKovan::countContaining("INF", "Registering new connection named"), 0);
}

TEST_F(CDBUSAdapterMessagesTest, TakesACallWithoutInterfaceForOneOfAnyInterface) {
    const RawMessage reply = call(makeCall("Introspect", nullptr));
    EXPECT_STREQ(dbus_message_get_signature(reply.get()), "s");
    EXPECT_EQ(FakeKovan::countContaining("INF", "Registering new connection named"), 0);
}

TEST_F(CDBUSAdapterMessagesTest, LeavesCallsOfOtherObjectsToTheLibrary) {
    RawMessage message(dbus_message_new_method_call(CONNECTION_NAME, "/other", INTERFACE_NAME, "any"));
    EXPECT_STREQ(dbus_message_get_error_name(call(std::move(message)).get()), DBUS_ERROR_UNKNOWN_METHOD);
    EXPECT_THAT(handler->requests(), IsEmpty());
}

TEST_F(CDBUSAdapterMessagesTest, HandlesASignalToItsObjectAsACallOfItsMember) {
    RawMessage signal = makeSignal("shout");
    appendBytes(*signal, "loud");
    const std::uint32_t serial = client().send(*signal);
    synchronize();
    ASSERT_EQ(handler->requests().size(), 2U);
    EXPECT_EQ(handler->requests()[0].method, "shout");
    EXPECT_EQ(handler->requests()[0].input, "loud");
    EXPECT_EQ(handler->requests()[0].sender, client().name());
    EXPECT_EQ(FakeKovan::count("INF", "Registering new connection named " + client().name()), 1);
    EXPECT_EQ(client().countReplies(serial), 0); // the bus lets through no answer to a signal
}

TEST_F(CDBUSAdapterMessagesTest, StandsASignalWithArgumentsThatAreNoBytes) {
    RawMessage signal = makeSignal("shout");
    const dbus_int32_t number = 1;
    dbus_message_append_args(signal.get(), DBUS_TYPE_INT32, &number, DBUS_TYPE_INVALID);
    client().send(*signal);
    synchronize();
    EXPECT_EQ(handler->requests().size(), 1U);
}

TEST_F(CDBUSAdapterMessagesTest, HandlesACallThatWantsNoReply) {
    RawMessage message = makeCallWith("quiet", "1");
    dbus_message_set_no_reply(message.get(), true);
    const std::uint32_t serial = client().send(*message);
    synchronize();
    EXPECT_EQ(handler->requests().at(0).method, "quiet");
    EXPECT_EQ(client().countReplies(serial), 0);
}

// --- Messages that want no reply ----------------------------------------------------------------------------------

// Sees everything that goes over the bus, also what the bus lets nobody have.
class Monitor {
public:
    Monitor() {
        RawMessage call(dbus_message_new_method_call(DBUS_SERVICE_DBUS, DBUS_PATH_DBUS,
                                                     "org.freedesktop.DBus.Monitoring", "BecomeMonitor"));
        const char* const* noRules = nullptr;
        const dbus_uint32_t flags = 0;
        dbus_message_append_args(call.get(), DBUS_TYPE_ARRAY, DBUS_TYPE_STRING, &noRules, 0, DBUS_TYPE_UINT32, &flags,
                                 DBUS_TYPE_INVALID);
        const RawMessage reply = m_peer.call(*call);
        EXPECT_EQ(dbus_message_get_error_name(reply.get()), nullptr);
    }

    // How many answers the adapter has sent to the message before it answered the later one.
    int countAnswers(const std::string& client, std::uint32_t serial, std::uint32_t later) {
        int count = 0;
        std::uint32_t answered = 0;
        while (answered != later) {
            const RawMessage message(dbus_connection_pop_message(m_peer.connection()));
            if (!message) {
                if (!dbus_connection_read_write(m_peer.connection(), 20000)) {
                    ADD_FAILURE() << "the monitor has lost its bus";
                    return count;
                }
            } else if (dbus_message_has_destination(message.get(), client.c_str()) &&
                       !dbus_message_has_sender(message.get(), DBUS_SERVICE_DBUS)) {
                answered = dbus_message_get_reply_serial(message.get());
                count += answered == serial ? 1 : 0;
            }
        }
        return count;
    }

private:
    RawPeer m_peer;
};

class NoReplyTest : public CDBUSAdapterMessagesTest {
protected:
    // The answers that were sent to the message, whoever got them.
    int answersTo(const RawMessage& message) {
        const std::uint32_t serial = client().send(*message);
        const std::uint32_t later = client().send(*makeCall("later"));
        return m_monitor.countAnswers(client().name(), serial, later);
    }

    static RawMessage quiet(RawMessage message) {
        dbus_message_set_no_reply(message.get(), true);
        return message;
    }

    static RawMessage withNumber(RawMessage message) {
        const dbus_int32_t number = 1;
        dbus_message_append_args(message.get(), DBUS_TYPE_INT32, &number, DBUS_TYPE_INVALID);
        return message;
    }

private:
    Monitor m_monitor;
};

TEST_F(NoReplyTest, AnswersACallThatSaysNothingElse) {
    EXPECT_EQ(answersTo(makeCall("any")), 1);
}

TEST_F(NoReplyTest, AnswersNoCallThatWantsNone) {
    EXPECT_EQ(answersTo(quiet(makeCallWith("quiet", "1"))), 0);
    EXPECT_EQ(handler->requests().at(0).method, "quiet");
    EXPECT_EQ(FakeKovan::count("INF", "Registering new connection named " + client().name()), 1);
}

TEST_F(NoReplyTest, AnswersNoIntrospectionThatWantsNone) {
    EXPECT_EQ(answersTo(quiet(makeIntrospection())), 0);
}

TEST_F(NoReplyTest, SendsNoErrorForACallThatWantsNoneWithArgumentsThatAreNoBytes) {
    EXPECT_EQ(answersTo(quiet(withNumber(makeCall("quiet")))), 0);
}

TEST_F(NoReplyTest, SendsNoErrorForACallThatWantsNoneOfAnotherObject) {
    EXPECT_EQ(
        answersTo(quiet(RawMessage(dbus_message_new_method_call(CONNECTION_NAME, "/other", INTERFACE_NAME, "any")))),
        0);
}

TEST_F(NoReplyTest, AnswersNoSignalAlthoughItDoesNotSayThatItWantsNoAnswer) {
    RawMessage signal = makeSignal("shout");
    dbus_message_set_no_reply(signal.get(), false);
    EXPECT_EQ(answersTo(signal), 0);
    EXPECT_EQ(handler->requests().at(0).method, "shout");
}

class PeerCallTest : public NoReplyTest {
protected:
    static RawMessage makePeerCall(const char* path, const char* member,
                                   const char* interfaceName = DBUS_INTERFACE_PEER) {
        return RawMessage(dbus_message_new_method_call(CONNECTION_NAME, path, interfaceName, member));
    }

    // "ok" with the text that came along, or the name of the error.
    std::string outcomeOf(const RawMessage& call) {
        const RawMessage reply = client().call(*call);
        if (!reply) {
            return "no reply";
        }
        if (const char* const error = dbus_message_get_error_name(reply.get())) {
            return error;
        }
        const char* text = "";
        dbus_message_get_args(reply.get(), nullptr, DBUS_TYPE_STRING, &text, DBUS_TYPE_INVALID);
        return std::string("ok") + text;
    }
};

TEST_F(PeerCallTest, IsAnsweredForEveryPathAsEveryProgramOnABusAnswers) {
    for (const char* const path : {OBJECT_PATH, "/", "/other"}) {
        EXPECT_EQ(outcomeOf(makePeerCall(path, "Ping")), "ok");
        EXPECT_EQ(outcomeOf(makePeerCall(path, "Ping", nullptr)), "ok");
        EXPECT_EQ(outcomeOf(makePeerCall(path, "Nonsense")), DBUS_ERROR_UNKNOWN_METHOD);
    }
    EXPECT_THAT(handler->requests(), IsEmpty());
    EXPECT_EQ(FakeKovan::count("INF", "Registering new connection named " + client().name()), 0);
}

TEST_F(PeerCallTest, TellsTheMachineOrThatItHasNoName) {
    char* const id = dbus_try_get_local_machine_id(nullptr);
    const std::string expected = id != nullptr ? std::string("ok") + id : DBUS_ERROR_FILE_NOT_FOUND;
    dbus_free(id);
    EXPECT_EQ(outcomeOf(makePeerCall(OBJECT_PATH, "GetMachineId")), expected);
}

TEST_F(PeerCallTest, IsNotAnsweredWhereNoAnswerIsWanted) {
    for (const char* const member : {"Ping", "GetMachineId", "Nonsense"}) {
        EXPECT_EQ(answersTo(quiet(makePeerCall(OBJECT_PATH, member))), 0) << member;
    }
}

class QuietFailureTest : public NoReplyTest {
protected:
    QuietFailureTest() {
        handler->onRequest = [](const FakeHandler::Request& request, std::stringstream&, std::string&) -> bool {
            if (request.method == "fail") {
                DAX_THROW(Common::DBUSWrapper::DBUSWrapperExceptions::DBUSMemoryError(), "no memory");
            }
            return true;
        };
    }
};

TEST_F(QuietFailureTest, SendsNoErrorForACallThatWantsNone) {
    EXPECT_EQ(answersTo(quiet(makeCall("fail"))), 0);
    EXPECT_EQ(FakeKovan::countContaining("ERR", "no memory"), 1);
}

TEST_F(CDBUSAdapterMessagesTest, WritesNoLineForACallOfAKnownClient) {
    synchronize();
    const std::size_t before = FakeKovan::logLines().size();
    synchronize();
    EXPECT_EQ(FakeKovan::logLines().size(), before);
}

class HandlerFailureTest : public AdapterFixture {};

TEST_F(HandlerFailureTest, SendsTheNameAndArchiveOfAnException) {
    handler->onRequest = [](const FakeHandler::Request&, std::stringstream& out, std::string& exceptionName) {
        out << "archive";
        exceptionName = "CWrongKeys";
        return false;
    };
    start();
    EXPECT_THAT(byteArrays(*RawPeer().call(*makeCall("fail"))), ElementsAre("EXCEPTION", "CWrongKeys", "archive"));
}

TEST_F(HandlerFailureTest, SendsEmptyNameAndArchiveAsEmptyArrays) {
    handler->onRequest = [](const FakeHandler::Request&, std::stringstream&, std::string&) { return false; };
    start();
    EXPECT_THAT(byteArrays(*RawPeer().call(*makeCall("fail"))), ElementsAre("EXCEPTION", "", ""));
}

TEST_F(HandlerFailureTest, LeavesACallToTheLibraryWhenTheReplyCannotBeSent) {
    handler->onRequest = [](const FakeHandler::Request&, std::stringstream&, std::string&) -> bool {
        DAX_THROW(Common::DBUSWrapper::DBUSWrapperExceptions::ERRORSendingReply(), "no way");
    };
    start();
    const RawMessage reply = RawPeer().call(*makeCall("fail"));
    EXPECT_STREQ(dbus_message_get_error_name(reply.get()), DBUS_ERROR_UNKNOWN_METHOD);
    EXPECT_THAT(FakeKovan::messages("ERR"),
                ElementsAre(StartsWith("Error sending reply message in adapter object: /org/kovan/test/object. "
                                       "Exception: ")));
    EXPECT_EQ(FakeKovan::countContaining("ERR", "no way"), 1);
}

TEST_F(HandlerFailureTest, LeavesACallToTheLibraryAfterAnotherFailureOfTheWrapper) {
    handler->onRequest = [](const FakeHandler::Request&, std::stringstream&, std::string&) -> bool {
        DAX_THROW(Common::DBUSWrapper::DBUSWrapperExceptions::DBUSMemoryError(), "no memory");
    };
    start();
    const RawMessage reply = RawPeer().call(*makeCall("fail"));
    EXPECT_STREQ(dbus_message_get_error_name(reply.get()), DBUS_ERROR_UNKNOWN_METHOD);
    EXPECT_THAT(FakeKovan::messages("ERR"),
                ElementsAre(StartsWith("DBUS error while handling message in adapter object: /org/kovan/test/object. "
                                       "Exception: ")));
}

TEST_F(HandlerFailureTest, AnswersAnArchiveThatIsTooLongForAnArrayAsAFailureOfTheWrapper) {
    handler->onRequest = [](const FakeHandler::Request&, std::stringstream& out, std::string&) {
        out << std::string(DBUS_MAXIMUM_ARRAY_LENGTH + 1, 'x');
        return true;
    };
    start();
    const RawMessage reply = RawPeer().call(*makeCall("huge"));
    EXPECT_STREQ(dbus_message_get_error_name(reply.get()), DBUS_ERROR_UNKNOWN_METHOD);
    EXPECT_EQ(FakeKovan::countContaining("ERR", "A byte array of 67108865 bytes cannot be appended."), 1);
}

TEST_F(HandlerFailureTest, RefusesAnIntrospectionTextThatIsNoUTF8) {
    class BadHandler : public FakeHandler {
        void introspect(std::stringstream& out) override { out << "\xff"; }
    };
    handler = std::make_shared<BadHandler>();
    adapter = createAdapter(handler);
    start();
    RawPeer().call(*makeIntrospection());
    EXPECT_THAT(FakeKovan::messages("ERR"),
                ElementsAre(StartsWith("Error sending reply message in adapter object: /org/kovan/test/object. "
                                       "Exception: ")));
}

// --- Failures of the library, which come only without memory ------------------------------------------------------

class LibraryFailureTest : public AdapterFixture, public testing::WithParamInterface<const char*> {
protected:
    // The reply to a call whose answer meets the failure.
    RawMessage callWithFault(const char* function) {
        handler->onRequest = [function](const FakeHandler::Request& request, std::stringstream& out, std::string&) {
            out << "result";
            failNext(request.method == "fail" ? function : "");
            return true;
        };
        start();
        return m_client.call(*makeCall("fail"));
    }

    RawPeer m_client;
};

TEST_P(LibraryFailureTest, LeavesTheCallToTheLibraryAndGoesOn) {
    const RawMessage reply = callWithFault(GetParam());
    EXPECT_STREQ(dbus_message_get_error_name(reply.get()), DBUS_ERROR_UNKNOWN_METHOD);
    EXPECT_THAT(FakeKovan::messages("ERR"),
                ElementsAre(StartsWith("DBUS error while handling message in adapter object: /org/kovan/test/object. "
                                       "Exception: ")));
    EXPECT_EQ(FakeKovan::countContaining("ERR", "DBUSMemoryError"), 1);
    EXPECT_THAT(byteArrays(*m_client.call(*makeCall("next"))), ElementsAre("REPLY", "next", "result"));
}

INSTANTIATE_TEST_SUITE_P(OfABuildingFunction, LibraryFailureTest,
                         testing::Values("dbus_message_new_method_return", "dbus_message_iter_open_container",
                                         "dbus_message_iter_append_fixed_array", "dbus_message_iter_close_container"),
                         [](const auto& function) { return std::string(function.param); });

TEST_F(LibraryFailureTest, SaysWhenAReplyCannotBeSent) {
    handler->onRequest = [](const FakeHandler::Request&, std::stringstream&, std::string&) {
        failNext("dbus_connection_send");
        return true;
    };
    start();
    const RawMessage reply = m_client.call(*makeCall("fail"));
    EXPECT_STREQ(dbus_message_get_error_name(reply.get()), DBUS_ERROR_UNKNOWN_METHOD);
    EXPECT_THAT(FakeKovan::messages("ERR"),
                ElementsAre(StartsWith("Error sending reply message in adapter object: /org/kovan/test/object. "
                                       "Exception: ")));
}

TEST_F(LibraryFailureTest, AssertsThatNothingElseIsThrownThroughTheLibrary) {
    handler->onRequest = [](const FakeHandler::Request&, std::stringstream&, std::string&) -> bool {
        throw std::runtime_error("unexpected");
    };
    EXPECT_EXIT(
        {
            FakeKovan::echoLogToStderr(true);
            adapter->activate(1, CONNECTION_NAME);
            RawPeer().call(*makeCall("any"));
            pause(); // until the adapter's thread ends the process
        },
        testing::KilledBySignal(SIGABRT),
        testing::AllOf(HasSubstr("Unknown error while handling message in adapter object: /org/kovan/test/object. "
                                 "Exception: "),
                       HasSubstr("unexpected"), HasSubstr("ASSERTION FAILED: false, ")));
}

// --- The types of a first argument --------------------------------------------------------------------------------

struct FirstArgument {
    const char* name;
    const char* signature;
};

void PrintTo(const FirstArgument& argument, std::ostream* out) {
    *out << argument.signature;
}

// Appends one value of the complete type at the iterator: zeros, empty texts, one element in each array.
void appendValue(DBusMessageIter& to, DBusSignatureIter& type) {
    const int kind = dbus_signature_iter_get_current_type(&type);
    if (dbus_type_is_basic(kind)) {
        const char* text = kind == DBUS_TYPE_OBJECT_PATH ? "/" : "";
        const std::uint64_t zero = 0; // the file descriptor 0 too
        const void* value = &zero;
        if (kind == DBUS_TYPE_STRING || kind == DBUS_TYPE_OBJECT_PATH || kind == DBUS_TYPE_SIGNATURE) {
            value = &text;
        }
        dbus_message_iter_append_basic(&to, kind, value);
        return;
    }
    DBusMessageIter container;
    DBusSignatureIter inner;
    if (kind == DBUS_TYPE_VARIANT) {
        dbus_message_iter_open_container(&to, kind, "i", &container);
        dbus_signature_iter_init(&inner, "i");
    } else {
        dbus_signature_iter_recurse(&type, &inner);
        char* element = dbus_signature_iter_get_signature(&inner);
        dbus_message_iter_open_container(&to, kind, kind == DBUS_TYPE_ARRAY ? element : nullptr, &container);
        dbus_free(element);
    }
    do {
        appendValue(container, inner);
    } while (kind != DBUS_TYPE_ARRAY && dbus_signature_iter_next(&inner));
    dbus_message_iter_close_container(&to, &container);
}

class FirstArgumentTest : public AdapterFixture, public testing::WithParamInterface<FirstArgument> {};

TEST_P(FirstArgumentTest, IsRefusedWithAnExceptionOfItsOwn) {
    start();
    RawPeer client;
    RawMessage message = makeCall("any");
    DBusMessageIter arguments;
    dbus_message_iter_init_append(message.get(), &arguments);
    DBusSignatureIter type;
    dbus_signature_iter_init(&type, GetParam().signature);
    appendValue(arguments, type);
    const RawMessage reply = client.call(*message);
    EXPECT_THAT(byteArrays(*reply), ElementsAre("EXCEPTION", "Invalid arguments.", "Nothing to add."));
    EXPECT_THAT(handler->requests(), IsEmpty());
    EXPECT_THAT(byteArrays(*client.call(*makeCall("next"))), ElementsAre("REPLY", "next", ""));
    EXPECT_EQ(client.countReplies(dbus_message_get_reply_serial(reply.get())), 0);
}

INSTANTIATE_TEST_SUITE_P(
    OfEveryType, FirstArgumentTest,
    testing::Values(FirstArgument{"Byte", "y"}, FirstArgument{"Boolean", "b"}, FirstArgument{"Int16", "n"},
                    FirstArgument{"UInt16", "q"}, FirstArgument{"Int32", "i"}, FirstArgument{"UInt32", "u"},
                    FirstArgument{"Int64", "x"}, FirstArgument{"UInt64", "t"}, FirstArgument{"Double", "d"},
                    FirstArgument{"String", "s"}, FirstArgument{"ObjectPath", "o"}, FirstArgument{"Signature", "g"},
                    FirstArgument{"UnixFd", "h"}, FirstArgument{"Variant", "v"}, FirstArgument{"Struct", "(is)"},
                    FirstArgument{"StructOfBytes", "(ay)"}, FirstArgument{"Dictionary", "a{sv}"},
                    FirstArgument{"ArrayOfBoolean", "ab"}, FirstArgument{"ArrayOfInt16", "an"},
                    FirstArgument{"ArrayOfUInt16", "aq"}, FirstArgument{"ArrayOfInt32", "ai"},
                    FirstArgument{"ArrayOfUInt32", "au"}, FirstArgument{"ArrayOfInt64", "ax"},
                    FirstArgument{"ArrayOfUInt64", "at"}, FirstArgument{"ArrayOfDouble", "ad"},
                    FirstArgument{"ArrayOfString", "as"}, FirstArgument{"ArrayOfObjectPath", "ao"},
                    FirstArgument{"ArrayOfSignature", "ag"}, FirstArgument{"ArrayOfUnixFd", "ah"},
                    FirstArgument{"ArrayOfVariant", "av"}, FirstArgument{"ArrayOfArray", "aay"},
                    FirstArgument{"ArrayOfStruct", "a(y)"}),
    [](const auto& argument) { return argument.param.name; });

} // namespace
} // namespace DAX::Tests
