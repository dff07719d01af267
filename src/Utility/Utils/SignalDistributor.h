#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <set>

#include <boost/core/noncopyable.hpp>

#include "Common/Logging/LoggingStream.h"
#include "Utility/Utils/SignalSubscriber.h"

namespace DAX::Common::Utils {

// Many listeners behind one subscription to a signal of the device that accepts only one. The listeners are ids of the
// UserDataRegister. Once made, the subscription stays for the life of the distributor, even without listeners. Any
// thread may call. The destructor of the subclass must unsubscribe.
template <class Callback>
class SignalDistributor : private boost::noncopyable {
public:
    virtual ~SignalDistributor() = default;

    // Subscribes to the device's signal; only the first successful call does. What the subscription throws passes, and
    // the next call tries again.
    void initialize() {
        const std::lock_guard<std::mutex> lock(m_initializeMutex);
        if (m_initialized) {
            return;
        }
        m_lowLevelSubscriber.reset(); // only one may exist at a time
        m_lowLevelSubscriber = doCreateLowLevelSubscriber();
        m_multiCallback = doGetMultiCallback();
        m_lowLevelSubscriber->subscribe(m_multiCallback);
        m_initialized = true;
    }

    // Adding a listener twice, or removing one that is not there, is only logged.
    void subscribe(void* id) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (!m_subscribers.insert(id).second) {
            DAX_LOG(ERR) << "Callback with id:" << id << " is already subscribed";
        }
    }
    void unsubscribe(void* id) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_subscribers.erase(id) == 0) {
            DAX_LOG(ERR) << "Callback with id:" << id << " is already unsubscribed";
        }
    }

protected:
    // Makes the subscriber to the device's signal, never null. initialize() calls it and passes on what it throws.
    virtual std::unique_ptr<SignalSubscriber<Callback>> doCreateLowLevelSubscriber() = 0;

    // The callback of the one subscription: it calls each listener that is subscribed at that moment. It runs on the
    // thread of the device's signal. initialize() calls this and passes on what it throws.
    virtual std::function<Callback> doGetMultiCallback() = 0;

    // The listeners, as a copy: a listener's callback may subscribe and unsubscribe.
    std::set<void*> subscribers() {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_subscribers;
    }

    // For the destructor of the subclass; null before the first initialize().
    SignalSubscriber<Callback>* lowLevelSubscriber() { return m_lowLevelSubscriber.get(); }

private:
    std::mutex m_mutex; // guards m_subscribers; the callback takes it, so it is not held while the device is called
    std::unique_ptr<SignalSubscriber<Callback>> m_lowLevelSubscriber;
    std::set<void*> m_subscribers;
    std::function<Callback> m_multiCallback;
    bool m_initialized = false;
    std::mutex m_initializeMutex; // guards the rest
};

} // namespace DAX::Common::Utils
