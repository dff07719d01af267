#include "Common/DBUSWrapper/IDBUSWrapper.h"

#include <gtest/gtest.h>

#include "Common/DBUSWrapper/DBUSWrapperExceptions.h"
#include "LibraryFaults.h"

namespace DAX::Tests {
namespace {

using namespace Common::DBUSWrapper;
using namespace DBUSWrapperExceptions;

TEST(IDBUSWrapperTest, NamesTheKindsOfReplies) {
    EXPECT_STREQ(REPLY_MESSAGE_TYPE_REPLY_STRING, "REPLY");
    EXPECT_STREQ(REPLY_MESSAGE_TYPE_EXCEPTION_STRING, "EXCEPTION");
}

TEST(IDBUSWrapperTest, PreparesTheLibraryForThreads) {
    const int before = threadInitializations();
    IDBUSWrapper::initialize();
    EXPECT_EQ(threadInitializations(), before + 1);
    IDBUSWrapper::initialize(); // once more does no harm
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
} // namespace DAX::Tests
