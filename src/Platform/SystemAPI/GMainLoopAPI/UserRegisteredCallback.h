#pragma once

#include <functional>

#include <boost/core/noncopyable.hpp>

namespace DAX::Platform::MainLoop {

// A C function and its argument, in the form that dispatchInMainLoop calls: register getCallbackPtr() in the
// UserDataRegister and dispatch the id. The object must outlive that registration. One thread at a time.
class UserRegisteredCallback : private boost::noncopyable {
public:
    virtual ~UserRegisteredCallback() = default;

    // The address of a std::function<int ()> in this object, which is empty until a function is set.
    virtual void* getCallbackPtr();

    // May be called once; a second call fails an assertion. The function runs once for each dispatch.
    virtual void setCallback(void (*function)(void*), void* argument);

private:
    std::function<int()> m_userRegisteredFunc;
};

} // namespace DAX::Platform::MainLoop
