#pragma once

#include <algorithm>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include <boost/core/noncopyable.hpp>
#include <boost/current_function.hpp>
#include <boost/exception/diagnostic_information.hpp>
#include <boost/optional.hpp>
#include <boost/thread/thread.hpp>

#include "Common/Logging/LoggingStream.h"
#include "Utility/Utils/DAXAssert.h"
#include "Utility/Utils/ErrInfoStream.h"
#include "Utility/Utils/GenericException.h"
#include "Utility/Utils/SingletonsRegister.h"
#include "Utility/Utils/UserDataRegister.h"

namespace DAX::Common::Utils {

// One listener's subscription to a signal of the device. May be subscribed again after it was unsubscribed; both may be
// called from any thread, also from inside the callback. The UserDataRegister must exist from the first subscription to
// the destructor's end. A subclass binds this to one signal, and its destructor calls unsubscribeFinally(), since this
// class's own is too late for that (an assertion).
//
// The destructor waits for a callback that is running on another thread, whoever unsubscribes it. A callback that ends
// its own subscriber is not waited for.
template <class Callback>
class SignalSubscriber : private boost::noncopyable {
public:
    virtual ~SignalSubscriber() {
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            if (m_subscribed) {
                BOOST_ASSERT_MSG(false, "Signal subscriber is still subscribed. Subclass should define an appropriate "
                                        "destructor.");
            }
        }
        unregisterFinally(BOOST_CURRENT_FUNCTION);
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
            unregister(lock, BOOST_CURRENT_FUNCTION);
        }
        m_callback = std::move(callback);
        m_callbackId = doRegisterCallback();
        m_item = userDataRegister(BOOST_CURRENT_FUNCTION)->getItem(m_callbackId);
        doSubscribe();
        m_subscribed = true;
    }

    // Throws GenericException when not subscribed. On return no callback is running or will start, but for one that
    // made this very call. A callback that asks for it while another thread is already waiting for the callback's end
    // has its wish, and goes on at once; anybody else finds it not subscribed meanwhile. After a failure it is not
    // subscribed, but the callback may still come until the next subscription or the destructor.
    void unsubscribe() {
        std::unique_lock<std::mutex> lock(m_mutex);
        if (m_unregistering && isCalledBackHere()) {
            return;
        }
        if (!m_subscribed) {
            DAX_THROW(GenericException(), errinfo_description("Not subscribed."));
        }
        unsubscribe(lock, BOOST_CURRENT_FUNCTION);
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

    // For the subclass's destructor: unsubscribes if it is subscribed, and waits for a callback that another thread is
    // running. Throws what unsubscribing throws.
    void unsubscribeFinally() {
        std::unique_lock<std::mutex> lock(m_mutex);
        do {
            m_unregistered.wait(lock, [this] { return !m_unregistering; });
            if (m_subscribed) {
                unsubscribe(lock, BOOST_CURRENT_FUNCTION);
            }
        } while (awaitCallbacks(lock)); // which may have subscribed again
    }

    // For the destructor of a subclass with members that its operations use; call it after unsubscribeFinally(). Takes
    // away a callback that a failure has left registered, while those members still exist.
    void unregisterFinally(const char* user) noexcept {
        try {
            std::unique_lock<std::mutex> lock(m_mutex);
            m_unregistered.wait(lock, [this] { return !m_unregistering; });
            if (m_callbackId != nullptr) {
                DAX_LOG(INF) << "Probably an exception was thrown while subscribing the callback in exernal API. The "
                                "callback is not subscribed, but it was registered in UserDataRegister. We need to "
                                "unregister it.";
                unregister(lock, user);
            }
            awaitCallbacks(lock);
        } catch (...) {
            DAX_LOG(FTL) << "Exception was caught in SignalSubscriber: "
                         << boost::current_exception_diagnostic_information(true);
        }
    }

    // For the operations above, which run under the mutex.
    void* callbackId() const { return m_callbackId; }
    std::function<Callback>& callback() { return m_callback; }

private:
    // Says to all that the callback is being unregistered, with the mutex released for as long.
    class Unregistration : private boost::noncopyable {
    public:
        Unregistration(SignalSubscriber& subscriber, std::unique_lock<std::mutex>& lock)
            : m_subscriber(subscriber), m_lock(lock) {
            m_subscriber.m_unregistering = true;
            m_lock.unlock();
        }
        ~Unregistration() {
            m_lock.lock();
            m_subscriber.m_unregistering = false;
            m_subscriber.m_unregistered.notify_all();
        }

    private:
        SignalSubscriber& m_subscriber;
        std::unique_lock<std::mutex>& m_lock;
    };

    static SingletonPointer<UserDataRegister> userDataRegister(const char* user) {
        return SingletonsRegister::getSingletonsRegister().getService<UserDataRegister>(user,
                                                                                        UserDataRegister::getID());
    }

    // All below are called with the mutex held, and return with it.

    void unsubscribe(std::unique_lock<std::mutex>& lock, const char* user) {
        m_subscribed = false;
        doUnsubscribe();
        unregister(lock, user);
    }

    // The id stays until it is over, so that nobody takes it for over before.
    void unregister(std::unique_lock<std::mutex>& lock, const char* user) {
        const bool calledBackHere = isCalledBackHere();
        const std::vector<std::shared_ptr<UserDataItem>> others = callbacksOfOthers();
        m_leaving.reserve(m_leaving.size() + 1);
        {
            const Unregistration unregistration(*this, lock);
            userDataRegister(user)->unregisterUserData(m_callbackId);
            await(others);
        }
        m_callbackId = nullptr;
        if (calledBackHere) {
            m_leaving.push_back(m_item);
        }
    }

    // Whether it had to wait.
    bool awaitCallbacks(std::unique_lock<std::mutex>& lock) {
        const std::vector<std::shared_ptr<UserDataItem>> others = callbacksOfOthers();
        if (others.empty()) {
            return false;
        }
        lock.unlock();
        await(others);
        lock.lock();
        return true;
    }

    static void await(const std::vector<std::shared_ptr<UserDataItem>>& callbacks) {
        for (const std::shared_ptr<UserDataItem>& callback : callbacks) {
            UserDataRegister::awaitCallback(*callback);
        }
    }

    // Those that unsubscribed and may still be running. None for a callback of this subscriber itself: two that waited
    // for each other would wait for ever.
    std::vector<std::shared_ptr<UserDataItem>> callbacksOfOthers() {
        const auto hasEnded = [](const std::weak_ptr<UserDataItem>& item) { return item.expired(); };
        m_leaving.erase(std::remove_if(m_leaving.begin(), m_leaving.end(), hasEnded), m_leaving.end());
        std::vector<std::shared_ptr<UserDataItem>> others;
        if (!isCalledBackHere()) {
            for (const std::weak_ptr<UserDataItem>& leaving : m_leaving) {
                if (std::shared_ptr<UserDataItem> item = leaving.lock()) {
                    others.push_back(std::move(item));
                }
            }
        }
        return others;
    }

    // Whether the calling thread is running a callback of this subscriber.
    bool isCalledBackHere() const {
        const auto isIt = [](const std::weak_ptr<UserDataItem>& callback) {
            const std::shared_ptr<UserDataItem> item = callback.lock();
            return item && UserDataRegister::isCalledBackHere(*item);
        };
        return isIt(m_item) || std::any_of(m_leaving.begin(), m_leaving.end(), isIt);
    }

    std::mutex m_mutex; // guards all below; not held while a running callback is waited for
    bool m_subscribed = false;
    void* m_callbackId = nullptr;
    std::function<Callback> m_callback;
    bool m_unregistering = false; // the callback of the id is being waited for
    std::condition_variable m_unregistered;
    std::weak_ptr<UserDataItem> m_item;                 // of the latest id
    std::vector<std::weak_ptr<UserDataItem>> m_leaving; // of callbacks that unsubscribed, and may still be running
};

} // namespace DAX::Common::Utils
