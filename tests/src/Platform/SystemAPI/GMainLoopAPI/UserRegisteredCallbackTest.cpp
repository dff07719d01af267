#include "Platform/SystemAPI/GMainLoopAPI/UserRegisteredCallback.h"

#include <gtest/gtest.h>

#include "support/ProcessDeath.h"
#include "support/Slots.h"

namespace DAX::Tests {
namespace {

using Platform::MainLoop::UserRegisteredCallback;

std::function<int()>& functionOf(UserRegisteredCallback& callback) {
    return *static_cast<std::function<int()>*>(callback.getCallbackPtr());
}

void increment(void* number) {
    ++*static_cast<int*>(number);
}

TEST(UserRegisteredCallbackTest, HasNoFunctionAtFirst) {
    UserRegisteredCallback callback;
    EXPECT_EQ(functionOf(callback), nullptr);
}

TEST(UserRegisteredCallbackTest, CallsTheFunctionWithItsArgumentAndEndsTheDispatch) {
    UserRegisteredCallback callback;
    int number = 41;
    callback.setCallback(increment, &number);
    EXPECT_EQ(functionOf(callback)(), 0);
    EXPECT_EQ(number, 42);
}

TEST(UserRegisteredCallbackTest, DoesNotCallTheFunctionByItself) {
    UserRegisteredCallback callback;
    int number = 41;
    callback.setCallback(increment, &number);
    EXPECT_EQ(number, 41);
}

TEST(UserRegisteredCallbackTest, KeepsItsPlace) {
    UserRegisteredCallback callback;
    void* const before = callback.getCallbackPtr();
    int number = 0;
    callback.setCallback(increment, &number);
    EXPECT_EQ(callback.getCallbackPtr(), before);
}

TEST(UserRegisteredCallbackTest, TakesOneFunctionOnly) {
    UserRegisteredCallback callback;
    int number = 0;
    callback.setCallback(increment, &number);
    EXPECT_ASSERTION_MSG(callback.setCallback(increment, &number), "m_userRegisteredFunc == nullptr",
                         "UserRegisteredCallback was already set");
}

TEST(UserRegisteredCallbackSlots, StandInTheirOrder) {
    using Callback = Platform::MainLoop::UserRegisteredCallback;
    EXPECT_EQ(slotsOf(&Callback::getCallbackPtr, &Callback::setCallback), slotsBehindTheDestructor(2));
}

} // namespace
} // namespace DAX::Tests
