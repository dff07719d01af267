#pragma once

#include <functional>
#include <mutex>
#include <utility>

#include <boost/core/noncopyable.hpp>
#include <boost/optional.hpp>
#include <boost/thread/thread.hpp>

#include "Utility/Utils/DAXAssert.h"
#include "Utility/Utils/ErrInfoStream.h"
#include "Utility/Utils/GenericException.h"

namespace DAX {
namespace Common {
namespace Utils {

// One listener's subscription to a signal of the device. May be subscribed again after it was unsubscribed; both may be
// called from any thread. A subclass binds it to one signal, and its destructor unsubscribes, since this class's own is
// too late for that (an assertion).
template <class Callback>
class SignalSubscriber : private boost::noncopyable {
public:
    virtual ~SignalSubscriber() {
        if (m_subscribed) {
            BOOST_ASSERT_MSG(false, "Signal subscriber is still subscribed. Subclass should define an appropriate "
                                    "destructor.");
        }
    }

    // Throws GenericException when subscribed already; the earlier callback then stays.
    void subscribe(std::function<Callback> callback) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_subscribed) {
            DAX_THROW(GenericException(), errinfo_description("Already subscribed."));
        }
        m_callback = std::move(callback);
        m_callbackId = doRegisterCallback();
        doSubscribe();
        m_subscribed = true;
    }

    // Throws GenericException when not subscribed. On return no callback is running or will start.
    void unsubscribe() {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (!m_subscribed) {
            DAX_THROW(GenericException(), errinfo_description("Not subscribed."));
        }
        m_subscribed = false;
        doUnsubscribe();
    }

protected:
    // Makes the callback reachable from a C interface and returns its id; null as long as none is needed.
    virtual void* doRegisterCallback() { return nullptr; }

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
    std::mutex m_mutex; // guards all below
    bool m_subscribed = false;
    void* m_callbackId = nullptr;
    std::function<Callback> m_callback;
};

} // namespace Utils
} // namespace Common
} // namespace DAX
