#include "Common/DBUSWrapper/IDBUSWrapper.h"

#include <gtest/gtest.h>

#include "Common/DBUSWrapper/DBUSWrapperExceptions.h"

namespace DAX {
namespace Tests {
namespace {

using namespace Common::DBUSWrapper;
using namespace DBUSWrapperExceptions;

TEST(IDBUSWrapperTest, NamesTheKindsOfReplies) {
    EXPECT_STREQ(REPLY_MESSAGE_TYPE_REPLY_STRING, "REPLY");
    EXPECT_STREQ(REPLY_MESSAGE_TYPE_EXCEPTION_STRING, "EXCEPTION");
}

TEST(IDBUSWrapperTest, CanBeInitializedMoreThanOnce) {
    IDBUSWrapper::initialize();
    IDBUSWrapper::initialize();
}

TEST(IDBUSWrapperTest, HasOneRootForItsExceptions) {
    EXPECT_THROW(throw UnknownMethodException(), DBUSWrapperException);
    EXPECT_THROW(throw RemoteObjectActivationTimedOut(), DBUSWrapperException);
    EXPECT_THROW(throw RemoteObjectNotAccessible(), DBUSWrapperException);
    EXPECT_THROW(throw ERRORSendingReply(), DBUSWrapperException);
    EXPECT_THROW(throw ERRORRegisteringObject(), DBUSWrapperException);
    EXPECT_THROW(throw DBUSMemoryError(), ErrorConnectingToDBUS);
    EXPECT_THROW(throw ErrorConnectingToDBUS(), DBUSWrapperException);
}

} // namespace
} // namespace Tests
} // namespace DAX
