#pragma once

#include <functional>

#include <boost/core/noncopyable.hpp>

namespace DAX::Platform::MainLoop {

// A C function with its argument in the form that dispatchInMainLoop calls: register getCallbackPtr() in the
// UserDataRegister and dispatch the id. It must outlive that registration. Belongs to one thread at a time.
class UserRegisteredCallback : private boost::noncopyable {
public:
    virtual ~UserRegisteredCallback() = default;

    // A std::function<int ()>, empty as long as no function is set.
    virtual void* getCallbackPtr();

    // Once; a second call fails an assertion. The function runs once for each dispatch.
    virtual void setCallback(void (*function)(void*), void* argument);

private:
    std::function<int()> m_userRegisteredFunc;
};

} // namespace DAX::Platform::MainLoop
