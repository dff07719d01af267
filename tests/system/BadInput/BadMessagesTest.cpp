// Messages in another form than a call with one byte array, for every method.
#include "AnyValue.h"
#include "ClientUnderTest.h"

namespace DAX::Tests {
namespace {

using testing::HasSubstr;

class BadMessages : public ClientUnderTest {
protected:
    Answer call(const ServiceMethod& method, const RawMessage& message) {
        return answerIn(peer(method.caller).call(*message));
    }

    // Sends a message that gets no answer, and waits until it has been handled.
    void sendUnanswered(const ServiceMethod& method, const RawMessage& message) {
        const std::uint32_t serial = peer(method.caller).send(*message);
        EXPECT_TRUE(ask({"getServiceOwner", method.caller}, "").isReply());
        EXPECT_EQ(peer(method.caller).countReplies(serial), 0) << method.name;
    }
};

TEST_F(BadMessages, WithoutABodyAreRefusedByEveryMethodThatReadsOne) {
    for (const ServiceMethod& method : serviceMethods()) {
        const Answer answer = call(method, makeCall(method.name));
        if (readsParameters(method)) {
            EXPECT_EQ(answer.type, "EXCEPTION") << method.name;
            EXPECT_EQ(answer.function, "DAXUnknownException") << method.name;
            EXPECT_THAT(answer.diagnostic(), HasSubstr("archive_exception")) << method.name;
        } else {
            EXPECT_EQ(answer.type, "REPLY");
        }
    }
}

// Every type that the first argument can have, except for an array of bytes.
const std::vector<std::string> OTHER_TYPES{"y",  "b",  "n",  "q",  "i",   "u",    "x",       "t",     "d",
                                           "s",  "o",  "g",  "h",  "v",   "(ay)", "(y(ss))", "a{sv}", "a{yay}",
                                           "ab", "an", "aq", "ai", "au",  "ax",   "at",      "ad",    "as",
                                           "ao", "ag", "ah", "av", "aay", "a(y)", "aaaaay"};

TEST_F(BadMessages, WithAnArgumentOfAnyOtherTypeAreRefusedByEveryMethod) {
    const Answer invalid{"EXCEPTION", "Invalid arguments.", "Nothing to add."};
    for (const std::string& type : OTHER_TYPES) {
        for (const ServiceMethod& method : serviceMethods()) {
            const RawMessage message = makeCall(method.name);
            appendAnyValue(*message, type);
            appendBytes(*message, goodRequest(method));
            EXPECT_EQ(call(method, message), invalid) << type << " for " << method.name;
        }
    }
}

TEST_F(BadMessages, AreReadToTheFirstArgument) {
    for (const ServiceMethod& method : serviceMethods()) {
        const Answer expected = askAndRestore(method, goodRequest(method));
        const RawMessage message = makeCallWith(method.name, goodRequest(method));
        appendAnyValue(*message, "a{sv}");
        const Answer answer = call(method, message);
        EXPECT_EQ(answer.type, expected.type) << method.name;
        EXPECT_EQ(answer.function, expected.function) << method.name;
        restore(method, goodRequest(method), answer);
    }
}

TEST_F(BadMessages, AreTakenWithEveryInterfaceAndWithNone) {
    for (const ServiceMethod& method : serviceMethods()) {
        const Answer expected = askAndRestore(method, goodRequest(method));
        for (const char* const interfaceName : {static_cast<const char*>(nullptr), "org.example.other",
                                                DBUS_INTERFACE_PROPERTIES, DBUS_INTERFACE_INTROSPECTABLE}) {
            const RawMessage message = makeCall(method.name, interfaceName);
            appendBytes(*message, goodRequest(method));
            const Answer answer = call(method, message);
            EXPECT_EQ(answer.type, expected.type) << method.name;
            EXPECT_EQ(answer.function, expected.function) << method.name;
            restore(method, goodRequest(method), answer);
        }
    }
}

TEST_F(BadMessages, ThatAreSignalsAreHandledWithoutAReply) {
    for (const ServiceMethod& method : serviceMethods()) {
        const RawMessage signal(
            dbus_message_new_signal(ManagerNames::OBJECT_PATH, ManagerNames::INTERFACE_NAME, method.name.c_str()));
        dbus_message_set_destination(signal.get(), ManagerNames::CONNECTION_NAME);
        appendBytes(*signal, goodRequest(method));
        sendUnanswered(method, signal);
        EXPECT_EQ(isFree(), method.name == "invalidate") << method.name;
        restore(method);
    }
}

TEST_F(BadMessages, ThatWantNoReplyAreHandledWithoutOne) {
    for (const ServiceMethod& method : serviceMethods()) {
        const RawMessage message = makeCallWith(method.name, goodRequest(method));
        dbus_message_set_no_reply(message.get(), true);
        sendUnanswered(method, message);
        EXPECT_EQ(isFree(), method.name == "invalidate") << method.name;
        restore(method);
    }
}

TEST_F(BadMessages, ForAnUnknownMethodAreRefusedByItsName) {
    for (const std::string& name :
         {std::string("stopTransaction"), std::string("GetAll"), std::string("getservice"), std::string("getService_"),
          std::string("cancelCoreTransaction"), std::string("_"), std::string(255, 'x')}) {
        for (const Caller caller : {Caller::MANAGER, Caller::SESSION, Caller::TRANSACTION}) {
            for (const std::string parameters : {"", "22 serialization::archive 18"}) {
                const Answer answer = ask({name, caller}, parameters);
                EXPECT_EQ(answer.type, "EXCEPTION") << name;
                EXPECT_EQ(answer.function, "DAXUnknownException") << name;
                EXPECT_THAT(answer.diagnostic(), HasSubstr("Unknown method: " + name));
            }
        }
    }
}

TEST_F(BadMessages, ThatAskForAnnouncedPropertiesAreRefusedAsAnUnknownMethod) {
    const RawMessage message = makeCall("GetAll", DBUS_INTERFACE_PROPERTIES);
    const Answer answer = answerIn(peer(Caller::MANAGER).call(*message));
    EXPECT_EQ(answer.function, "DAXUnknownException");
    EXPECT_THAT(answer.diagnostic(), HasSubstr("Unknown method: GetAll"));
}

TEST_F(BadMessages, OfTheObjectsOwnIntrospectionNameEveryMethod) {
    const RawMessage reply = peer(Caller::MANAGER).call(*makeCall("Introspect", DBUS_INTERFACE_INTROSPECTABLE));
    const char* text = nullptr;
    ASSERT_TRUE(dbus_message_get_args(reply.get(), nullptr, DBUS_TYPE_STRING, &text, DBUS_TYPE_INVALID));
    const std::string xml = text;
    std::size_t methods = 0;
    for (std::size_t at = xml.find("serialized_params_in"); at != std::string::npos;
         at = xml.find("serialized_params_in", at + 1)) {
        ++methods;
    }
    EXPECT_EQ(methods, serviceMethods().size());
    for (const ServiceMethod& method : serviceMethods()) {
        EXPECT_THAT(xml, HasSubstr("<method name=\"" + method.name + "\">"));
    }
}

} // namespace
} // namespace DAX::Tests
