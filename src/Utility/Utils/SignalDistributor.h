#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <set>

#include <boost/core/noncopyable.hpp>

#include "Common/Logging/LoggingStream.h"
#include "Utility/Utils/SignalSubscriber.h"

namespace DAX::Common::Utils {

// Many listeners behind one subscription to a signal of the device, which takes one only. The listeners are ids of the
// UserDataRegister. Once made, the one subscription stays for the distributor's life, whatever listeners there are. Any
// thread may call. The subclass's destructor unsubscribes it.
template <class Callback>
class SignalDistributor : private boost::noncopyable {
public:
    virtual ~SignalDistributor() = default;

    // Subscribes to the device's signal; only the first call does. What the subscription throws passes, and the next
    // call tries again.
    void initialize() {
        const std::lock_guard<std::mutex> lock(m_initializeMutex);
        if (m_initialized) {
            return;
        }
        m_lowLevelSubscriber.reset(); // there may be one only
        m_lowLevelSubscriber = doCreateLowLevelSubscriber();
        m_multiCallback = doGetMultiCallback();
        m_lowLevelSubscriber->subscribe(m_multiCallback);
        m_initialized = true;
    }

    // A listener that is there already, or is not there, is logged.
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
    virtual std::unique_ptr<SignalSubscriber<Callback>> doCreateLowLevelSubscriber() = 0;

    // What the one subscription calls: it calls each of the listeners there are at that moment.
    virtual std::function<Callback> doGetMultiCallback() = 0;

    // A copy, so that a listener's callback may subscribe and unsubscribe.
    std::set<void*> subscribers() {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_subscribers;
    }

    // Null before the first initialize(). For the subclass's destructor.
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
