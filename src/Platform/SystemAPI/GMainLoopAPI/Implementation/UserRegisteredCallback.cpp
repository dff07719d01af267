#include "Platform/SystemAPI/GMainLoopAPI/UserRegisteredCallback.h"

#include "Utility/Utils/DAXAssert.h"

namespace DAX::Platform::MainLoop {
namespace {

const int RUN_ONCE = 0; // the value by which a function leaves the loop

} // namespace

void* UserRegisteredCallback::getCallbackPtr() {
    return &m_userRegisteredFunc;
}

void UserRegisteredCallback::setCallback(void (*function)(void*), void* argument) {
    BOOST_ASSERT_MSG(m_userRegisteredFunc == nullptr, "UserRegisteredCallback was already set");
    m_userRegisteredFunc = [function, argument] {
        function(argument);
        return RUN_ONCE;
    };
}

} // namespace DAX::Platform::MainLoop
