#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "Platform/SystemAPI/PowerModeSystemAPI/IPowerModeSubscribersFactory.h"
#include "Utility/Utils/SingletonServiceGuard.h"
#include "Utility/Utils/UserDataRegister.h"

namespace DAX::Tests {

// The device's power events, fired by the test. The test holds the script, which the factory and its subscribers share.
// `observer` is told of "create", "subscribe" and "unsubscribe" of the power-mode subscriber, so that they can be put
// in order with what other fakes record. Only `change` may be called on another thread than the test's.
class FakePowerModeScript {
public:
    std::function<void(const std::string& what)> observer;

    bool isSubscribed() const { return static_cast<bool>(m_callback); }

    // Runs the subscribed callback on the calling thread.
    void change(DAXCommon::PowerMode mode) const { m_callback(mode); }

private:
    friend class FakePowerModeFactory;
    friend class FakePowerModeSubscriber;

    void record(const std::string& what) const {
        if (observer) {
            observer(what);
        }
    }

    const Common::Utils::SingletonServiceGuard<Common::Utils::UserDataRegister> m_userDataRegister;
    std::function<void(DAXCommon::PowerMode)> m_callback;
};

class FakePowerModeSubscriber : public Common::Utils::SignalSubscriber<void(DAXCommon::PowerMode)> {
public:
    explicit FakePowerModeSubscriber(std::shared_ptr<FakePowerModeScript> script) : m_script(std::move(script)) {}
    ~FakePowerModeSubscriber() override { unsubscribeFinally(); }

private:
    boost::optional<boost::thread::id> getExpectedExecutorThreadID() override { return boost::none; }
    void doSubscribe() override {
        m_script->record("subscribe");
        m_script->m_callback = callback();
    }
    int doUnsubscribe() override {
        m_script->record("unsubscribe");
        m_script->m_callback = nullptr;
        return 0;
    }

    std::shared_ptr<FakePowerModeScript> m_script;
};

// Makes only the power-mode subscriber; the other two are empty pointers.
class FakePowerModeFactory : public Platform::IPowerModeSubscribersFactory {
public:
    explicit FakePowerModeFactory(std::shared_ptr<FakePowerModeScript> script) : m_script(std::move(script)) {}

    std::unique_ptr<Common::Utils::SignalSubscriber<void(DAXCommon::PowerMode)>>
    createPowerModeChangeSignalSubscriber() override {
        m_script->record("create");
        return std::make_unique<FakePowerModeSubscriber>(m_script);
    }
    std::unique_ptr<Common::Utils::SignalSubscriber<void(DAXCommon::PowerMode)>>
    createPowerOffSignalSubscriber() override {
        return nullptr;
    }
    std::unique_ptr<Common::Utils::SignalSubscriber<void()>> createPostWakeUpSignalSubscriber() override {
        return nullptr;
    }

private:
    std::shared_ptr<FakePowerModeScript> m_script;
};

} // namespace DAX::Tests
