#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <utility>

#include <boost/core/noncopyable.hpp>
#include <boost/current_function.hpp>
#include <boost/optional.hpp>
#include <boost/thread/thread.hpp>

#include "Common/Logging/LoggingStream.h"
#include "Utility/Utils/DAXAssert.h"
#include "Utility/Utils/ErrInfoStream.h"
#include "Utility/Utils/GenericException.h"
#include "Utility/Utils/SingletonsRegister.h"
#include "Utility/Utils/UserDataRegister.h"

namespace DAX {
namespace Common {
namespace Utils {

// One listener's subscription to a signal of the device. May be subscribed again after it was unsubscribed; both may be
// called from any thread. The UserDataRegister must exist from the first subscription to the destructor's end. A
// subclass binds this to one signal, and its destructor unsubscribes, since this class's own is too late for that (an
// assertion).
template <class Callback>
class SignalSubscriber : private boost::noncopyable {
public:
    virtual ~SignalSubscriber() {
        if (m_subscribed) {
            BOOST_ASSERT_MSG(false, "Signal subscriber is still subscribed. Subclass should define an appropriate "
                                    "destructor.");
        }
        if (m_callbackId != nullptr) {
            DAX_LOG(INF) << "Probably an exception was thrown while subscribing the callback in exernal API. The "
                            "callback is not subscribed, but it was registered in UserDataRegister. We need to "
                            "unregister it.";
            unregister(BOOST_CURRENT_FUNCTION, m_callbackId);
        }
    }

    // Throws GenericException when subscribed already; the earlier callback then stays. What doSubscribe throws passes.
    // Waits for the end of another thread's unsubscribe(), so the callback that this one waits for must not call it.
    void subscribe(std::function<Callback> callback) {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_unregistered.wait(lock, [this] { return !m_unregistering; });
        if (m_subscribed) {
            DAX_THROW(GenericException(), errinfo_description("Already subscribed."));
        }
        if (m_callbackId != nullptr) { // of an attempt that failed
            unregister(BOOST_CURRENT_FUNCTION, std::exchange(m_callbackId, nullptr));
        }
        m_callback = std::move(callback);
        m_callbackId = doRegisterCallback();
        doSubscribe();
        m_subscribed = true;
    }

    // Throws GenericException when not subscribed. On return no callback is running or will start, but for one that
    // made this very call. Whoever else asks meanwhile, such as a running callback, finds it not subscribed.
    void unsubscribe() {
        std::unique_lock<std::mutex> lock(m_mutex);
        if (!m_subscribed) {
            DAX_THROW(GenericException(), errinfo_description("Not subscribed."));
        }
        m_subscribed = false;
        doUnsubscribe();
        void* const id = std::exchange(m_callbackId, nullptr);
        m_unregistering = true;
        lock.unlock();
        unregister(BOOST_CURRENT_FUNCTION, id);
        lock.lock();
        m_unregistering = false;
        m_unregistered.notify_all();
    }

protected:
    // Makes the callback reachable from a C interface and returns its id.
    virtual void* doRegisterCallback() {
        return SingletonsRegister::getSingletonsRegister()
            .getService<UserDataRegister>(BOOST_CURRENT_FUNCTION, UserDataRegister::getID())
            ->registerUserData(&m_callback, getExpectedExecutorThreadID());
    }

    // The thread that alone may call back; empty for any.
    virtual boost::optional<boost::thread::id> getExpectedExecutorThreadID() = 0;

    virtual void doSubscribe() = 0;

    // The device's result, which nobody looks at.
    virtual int doUnsubscribe() = 0;

    bool isSubscribed() {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_subscribed;
    }

    // For the operations above, which run under the mutex.
    void* callbackId() const { return m_callbackId; }
    std::function<Callback>& callback() { return m_callback; }

private:
    static void unregister(const char* user, void* id) {
        SingletonsRegister::getSingletonsRegister()
            .getService<UserDataRegister>(user, UserDataRegister::getID())
            ->unregisterUserData(id);
    }

    std::mutex m_mutex; // guards all below; not held while a running callback is waited for
    bool m_subscribed = false;
    void* m_callbackId = nullptr;
    std::function<Callback> m_callback;
    bool m_unregistering = false;
    std::condition_variable m_unregistered;
};

} // namespace Utils
} // namespace Common
} // namespace DAX
