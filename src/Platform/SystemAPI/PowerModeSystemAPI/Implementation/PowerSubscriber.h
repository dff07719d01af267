#pragma once

#include <functional>
#include <utility>

#include <boost/exception/diagnostic_information.hpp>

#include "Common/Logging/LoggingStream.h"
#include "Platform/SystemAPI/GMainLoopAPI/MainLoop.h"
#include "Utility/Utils/SignalSubscriber.h"

namespace DAX::Platform {

// What the subscribers to power events have in common: they are called back on the main loop's thread only, in the
// device's form int (int), which a wrapper turns into the user's form.
template <class Callback>
class PowerSubscriber : public Common::Utils::SignalSubscriber<Callback> {
protected:
    // For a subclass's doRegisterCallback: takes the user's callback and registers the wrapper in its place.
    void* registerWrapper(const char* user, std::function<int(int)> wrapper) {
        m_userCallback = std::exchange(this->callback(), nullptr);
        m_wrapper = std::move(wrapper);
        return Common::Utils::SingletonsRegister::getSingletonsRegister()
            .getService<Common::Utils::UserDataRegister>(user, Common::Utils::UserDataRegister::getID())
            ->registerUserData(&m_wrapper, getExpectedExecutorThreadID());
    }

    // A copy, since the callback may unsubscribe itself and subscribe another one.
    std::function<Callback> userCallback() const { return m_userCallback; }

    boost::optional<boost::thread::id> getExpectedExecutorThreadID() override { return MainLoop::getMainLoopTheadId(); }

    // For the destructor of each subclass.
    void unsubscribeAtEnd(const char* name) noexcept {
        try {
            this->unsubscribeFinally();
        } catch (...) {
            DAX_LOG(ERR) << "Exception was caught in " << name << ": "
                         << boost::current_exception_diagnostic_information(true);
        }
        this->unregisterFinally(name); // now, since the wrapper is destroyed before the base class
    }

private:
    std::function<Callback> m_userCallback;
    std::function<int(int)> m_wrapper;
};

} // namespace DAX::Platform
