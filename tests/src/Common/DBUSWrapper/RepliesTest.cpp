#include "Common/DBUSWrapper/Implementation/Replies.h"

#include <string>
#include <utility>
#include <vector>

#include <dbus/dbus.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Common/DBUSWrapper/DBUSWrapperExceptions.h"
#include "LibraryFaults.h"
#include "support/RawPeer.h"

namespace DAX::Tests {
namespace {

using Common::DBUSWrapper::Replies;
using Common::DBUSWrapper::DBUSWrapperExceptions::DBUSMemoryError;
using testing::ElementsAre;

RawMessage callFrom(const char* sender, dbus_uint32_t serial) {
    RawMessage call(dbus_message_new_method_call("org.kovan.test", "/org/kovan/test", "org.kovan.itest", "method"));
    dbus_message_set_sender(call.get(), sender);
    dbus_message_set_serial(call.get(), serial);
    return call;
}

// What goes over the socket.
std::string bytesOf(DBusMessage* message) {
    dbus_message_set_serial(message, 1);
    char* data = nullptr;
    int length = 0;
    dbus_message_marshal(message, &data, &length);
    std::string bytes(data, static_cast<std::size_t>(length));
    dbus_free(data);
    return bytes;
}

std::string bytesOfNewReply(DBusMessage& call, const std::string& kind, const std::string& name,
                            const std::string& data) {
    const RawMessage reply(dbus_message_new_method_return(&call));
    appendBytes(*reply, kind);
    appendBytes(*reply, name);
    appendBytes(*reply, data);
    return bytesOf(reply.get());
}

class RepliesTest : public testing::Test {
protected:
    // What the next reply says must not depend on the replies before.
    void expectBytesOfANewReply(const char* sender, dbus_uint32_t serial, const std::string& kind,
                                const std::string& name, const std::string& data) {
        const RawMessage call = callFrom(sender, serial);
        EXPECT_EQ(bytesOf(replies.make(call.get(), kind, name, data).get()), bytesOfNewReply(*call, kind, name, data))
            << name << " to " << (sender != nullptr ? sender : "nobody");
    }

    Replies replies;
};

TEST_F(RepliesTest, HasTheBytesOfANewReplyToEachCallOfARow) {
    expectBytesOfANewReply(":1.7", 2, "REPLY", "getProgress", "22 serialization::archive 19 0 0 0 1");
    expectBytesOfANewReply(":1.7", 3, "REPLY", "getProgress", "22 serialization::archive 19 0 0 0 100 of more");
    expectBytesOfANewReply(":1.7", 0xffffffff, "REPLY", "getProgress", "");
    expectBytesOfANewReply(":1.7", 5, "REPLY", "getProgress", std::string(100000, '\0'));
}

TEST_F(RepliesTest, GoesToTheCallerOfEachCall) {
    expectBytesOfANewReply(":1.7", 2, "REPLY", "method", "first");
    expectBytesOfANewReply(":1.123456789", 2, "REPLY", "method", "a longer name");
    expectBytesOfANewReply(":1.8", 2, "REPLY", "method", "a shorter one");
    expectBytesOfANewReply(":1.7", 3, "REPLY", "method", "the first again");
}

TEST_F(RepliesTest, NamesTheKindAndTheFunctionOfEachReply) {
    const std::vector<std::pair<std::string, std::string>> names = {
        {"REPLY", "method"}, {"EXCEPTION", "method"}, {"EXCEPTION", "Invalid arguments."}, {"REPLY", ""}};
    for (const int inARow : {1, 2, 3}) {
        for (const auto& [kind, name] : names) {
            for (int i = 0; i < inARow; ++i) {
                expectBytesOfANewReply(":1.7", 2, kind, name, "data");
            }
        }
    }
}

TEST_F(RepliesTest, AnswersACallThatNamesNoSender) {
    expectBytesOfANewReply(nullptr, 2, "REPLY", "method", "data");
    expectBytesOfANewReply(":1.7", 3, "REPLY", "method", "data");
    expectBytesOfANewReply(nullptr, 4, "REPLY", "method", "data");
    expectBytesOfANewReply(":1.7", 5, "REPLY", "method", "data");
    expectBytesOfANewReply(nullptr, 6, "REPLY", "method", "data");
    expectBytesOfANewReply(":1.7", 7, "REPLY", "method", "data");
}

TEST_F(RepliesTest, LeavesAnEarlierReplyAsItWas) {
    const RawMessage call = callFrom(":1.7", 2);
    const auto first = replies.make(call.get(), "REPLY", "method", "first");
    const auto second = replies.make(call.get(), "REPLY", "method", "second");
    const auto third = replies.make(call.get(), "REPLY", "method", "third");
    EXPECT_THAT(byteArrays(*first), ElementsAre("REPLY", "method", "first"));
    EXPECT_THAT(byteArrays(*second), ElementsAre("REPLY", "method", "second"));
    EXPECT_THAT(byteArrays(*third), ElementsAre("REPLY", "method", "third"));
}

class RepliesFailureTest : public RepliesTest, public testing::WithParamInterface<const char*> {};

TEST_P(RepliesFailureTest, SaysSoAndGoesOn) {
    const RawMessage call = callFrom(":1.7", 2);
    replies.make(call.get(), "REPLY", "before", "data");
    replies.make(call.get(), "REPLY", "method", "data"); // so that the next is the first that is copied
    failNext(GetParam());
    EXPECT_THROW(replies.make(call.get(), "REPLY", "method", "data"), DBUSMemoryError);
    expectBytesOfANewReply(":1.7", 3, "REPLY", "method", "data");
    expectBytesOfANewReply(":1.7", 4, "REPLY", "before", "data");
}

INSTANTIATE_TEST_SUITE_P(OfABuildingFunction, RepliesFailureTest,
                         testing::Values("dbus_message_new_method_return", "dbus_message_copy",
                                         "dbus_message_set_reply_serial", "dbus_message_iter_open_container",
                                         "dbus_message_iter_append_fixed_array", "dbus_message_iter_close_container"),
                         [](const auto& function) { return std::string(function.param); });

TEST_F(RepliesTest, SaysWhenTheReceiverCannotBeChanged) {
    replies.make(callFrom(":1.7", 2).get(), "REPLY", "method", "data");
    replies.make(callFrom(":1.7", 3).get(), "REPLY", "method", "data");
    const RawMessage call = callFrom(":1.8", 2);
    failNext("dbus_message_set_destination");
    EXPECT_THROW(replies.make(call.get(), "REPLY", "method", "data"), DBUSMemoryError);
    expectBytesOfANewReply(":1.8", 3, "REPLY", "method", "data");
}

TEST_F(RepliesTest, RefusesDataThatNoArrayHoldsAndGoesOn) {
    const RawMessage call = callFrom(":1.7", 2);
    replies.make(call.get(), "REPLY", "method", "data");
    const std::string tooLong(DBUS_MAXIMUM_ARRAY_LENGTH + 1, 'x');
    EXPECT_THROW(replies.make(call.get(), "REPLY", "method", tooLong), DBUSMemoryError);
    expectBytesOfANewReply(":1.7", 3, "REPLY", "method", "data");
}

} // namespace
} // namespace DAX::Tests
