#pragma once

#include <atomic>
#include <functional>
#include <stdexcept>

#include <boost/optional.hpp>
#include <boost/thread/thread.hpp>

#include "Utility/Utils/SignalSubscriber.h"
#include "Utility/Utils/UserDataRegister.h"
#include "support/FakeKovan.h"

namespace DAX::Tests {

// A subscriber to a signal that the test sends by hand; it notes its calls in the journal. The settings belong to the
// test's thread.
class TestSubscriber : public Common::Utils::SignalSubscriber<int(int)> {
public:
    ~TestSubscriber() override {
        if (unsubscribesAtItsEnd) {
            unsubscribeFinally();
        }
    }

    // Sends the device's signal on the calling thread; returns the result of the callback, or -1.
    int signal(int value) const {
        return Common::Utils::UserDataRegister::GenericFunctorCallback<int(int)>::call<-1>(value, m_lastId);
    }

    // The id of the latest subscription.
    void* lastId() const { return m_lastId; }

    bool failsToSubscribe = false;
    bool failsToUnsubscribe = false;
    bool unsubscribesAtItsEnd = true;
    std::function<void()> atSubscription = [] {};
    std::function<void()> atUnsubscription = [] {};
    std::function<boost::optional<boost::thread::id>()> expectedExecutor = [] { return boost::none; };

protected:
    void* doRegisterCallback() override {
        FakeKovan::note("register");
        return SignalSubscriber::doRegisterCallback();
    }
    boost::optional<boost::thread::id> getExpectedExecutorThreadID() override { return expectedExecutor(); }
    void doSubscribe() override {
        FakeKovan::note("subscribe");
        m_lastId = callbackId();
        atSubscription();
        if (failsToSubscribe) {
            throw std::domain_error("no signal");
        }
    }
    int doUnsubscribe() override {
        FakeKovan::note("unsubscribe");
        atUnsubscription();
        if (failsToUnsubscribe) {
            throw std::domain_error("no way back");
        }
        return -1;
    }

private:
    std::atomic<void*> m_lastId{nullptr};
};

} // namespace DAX::Tests
