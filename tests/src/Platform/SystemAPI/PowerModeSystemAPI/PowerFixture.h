#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Platform/SystemAPI/GMainLoopAPI/MainLoopSingleton.h"
#include "Platform/SystemAPI/PowerModeSystemAPI/CPowerModeSubscribersFactory.h"
#include "Utility/Utils/SingletonServiceGuard.h"
#include "Utility/Utils/UserDataRegister.h"
#include "support/FakeKovan.h"
#include "support/Thrown.h"

namespace DAX::Tests {

// A main loop whose thread is the one that made it, so that the test itself can announce power events.
class LoopHere : public Platform::MainLoop::MainLoopSingleton {
public:
    boost::thread::id getMainLoopThreadId() const override {
        if (whenAsked) {
            whenAsked();
        }
        return m_thread;
    }

    std::function<void()> whenAsked; // runs whenever somebody asks for the thread

private:
    const boost::thread::id m_thread = boost::this_thread::get_id();
};

// The singletons that the subscribers need, as main makes them, with a main loop on the test's own thread.
class PowerFixture : public testing::Test {
protected:
    using Subscriber = Common::Utils::SignalSubscriber<void(DAXCommon::PowerMode)>;

    PowerFixture() {
        using Platform::MainLoop::MainLoopSingleton;
        auto made = std::make_unique<LoopHere>();
        loop = made.get();
        Common::Utils::SingletonsRegister::getSingletonsRegister()
            .getService<MainLoopSingleton>("PowerFixture", MainLoopSingleton::getID())
            ->setMainLoopImplementation(std::move(made));
        FakeKovan::forgetRecords();
    }

    std::unique_ptr<Subscriber> makePowerOff() { return factory.createPowerOffSignalSubscriber(); }

    // A callback that keeps its argument in `modes`.
    std::function<void(DAXCommon::PowerMode)> collect() {
        return [this](DAXCommon::PowerMode mode) { modes.push_back(mode); };
    }

    const Common::Utils::SingletonServiceGuard<Common::Utils::UserDataRegister> userDataRegister;
    const Common::Utils::SingletonServiceGuard<Platform::MainLoop::MainLoopSingleton> mainLoop{
        Platform::MainLoop::MainLoopSingleton::create};
    LoopHere* loop = nullptr;
    Platform::CPowerModeSubscribersFactory factory;
    std::vector<int> modes;
};

} // namespace DAX::Tests
