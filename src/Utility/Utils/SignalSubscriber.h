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
#include <boost/thread/thread_only.hpp>

#include "Common/Logging/LoggingStream.h"
#include "Utility/Utils/DAXAssert.h"
#include "Utility/Utils/ErrInfoStream.h"
#include "Utility/Utils/GenericException.h"
#include "Utility/Utils/SingletonsRegister.h"
#include "Utility/Utils/UserDataRegister.h"

namespace DAX::Common::Utils {

// One listener's subscription to a signal of the device. After unsubscribing it may subscribe again; both may be called
// from any thread, even inside the callback. The UserDataRegister must exist from the first subscription until the
// destructor has ended. A subclass binds this to one signal. Its destructor must call unsubscribeFinally(), because the
// destructor of this class comes too late for that (an assertion).
//
// The destructor waits for a callback that runs on another thread, whoever unsubscribes. It does not wait for a
// callback that destroys its own subscriber.
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

    // Subscribes `callback`, which runs on the device's thread. Throws GenericException when already subscribed; the
    // earlier callback then stays. What doSubscribe() throws passes. It waits for the end of another thread's
    // unsubscribe(), so a callback that this one waits for must not call it.
    void subscribe(std::function<Callback> callback) {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_unregistered.wait(lock, [this] { return !m_unregistering; });
        if (m_subscribed) {
            DAX_THROW(GenericException(), errinfo_description("Already subscribed."));
        }
        if (m_callbackId != nullptr) { // left by an attempt that failed
            unregister(lock, BOOST_CURRENT_FUNCTION);
        }
        m_callback = std::move(callback);
        m_callbackId = doRegisterCallback();
        m_item = userDataRegister(BOOST_CURRENT_FUNCTION)->getItem(m_callbackId);
        doSubscribe();
        m_subscribed = true;
    }

    // Unsubscribes. Throws GenericException when not subscribed. On return no callback runs or will start, except one
    // that makes this very call. If a callback calls this while another thread already waits for the callback's end, it
    // returns at once; any other thread gets the exception meanwhile. After a failure it is not subscribed, but the
    // callback may still come until the next subscription or the destructor.
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

    // The only thread that may call back; empty for any.
    virtual boost::optional<boost::thread::id> getExpectedExecutorThreadID() = 0;

    // Subscribes at the device, with callbackId() as its user data. Throws when the device refuses.
    virtual void doSubscribe() = 0;

    // Unsubscribes at the device and returns its result, which is ignored. What it throws passes.
    virtual int doUnsubscribe() = 0;

    // For the destructor of the subclass: unsubscribes if needed, and waits for a callback that another thread runs.
    // Throws what unsubscribing throws.
    void unsubscribeFinally() {
        std::unique_lock<std::mutex> lock(m_mutex);
        do {
            m_unregistered.wait(lock, [this] { return !m_unregistering; });
            if (m_subscribed) {
                unsubscribe(lock, BOOST_CURRENT_FUNCTION);
            }
        } while (awaitCallbacks(lock)); // those may have subscribed again
    }

    // For the destructor of a subclass whose operations use its own members; call it after unsubscribeFinally().
    // Removes a callback that a failure has left registered, while those members still exist.
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

    // For the do... operations, which run with the mutex held.
    void* callbackId() const { return m_callbackId; }
    std::function<Callback>& callback() { return m_callback; }

private:
    // Marks the callback as being unregistered, and releases the mutex for that time.
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

    // Everything below is called with the mutex held, and returns with it.

    void unsubscribe(std::unique_lock<std::mutex>& lock, const char* user) {
        m_subscribed = false;
        doUnsubscribe();
        unregister(lock, user);
    }

    // The id stays until this is over, so that nobody believes it finished before.
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

    // Returns whether it had to wait.
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

    // The callbacks that unsubscribed and may still be running. Empty on a thread that runs a callback of this
    // subscriber: two that waited for each other would wait for ever.
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
