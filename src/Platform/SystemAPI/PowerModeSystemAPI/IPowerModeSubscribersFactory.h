#pragma once

#include <memory>

#include "DAXCommon/PowerMode.h"
#include "Utility/Utils/SignalSubscriber.h"

namespace DAX::Platform {

// Makes subscribers to the device's power events. They are not subscribed yet; the caller owns them. Their callbacks
// run on the main loop's thread. The guards of UserDataRegister and MainLoopSingleton must outlive them, and the main
// loop must be initialized before one is subscribed. subscribe() throws GenericException when the device refuses: it
// takes one power-mode and one wake-up subscriber of a process at a time. Any thread may call.
class IPowerModeSubscribersFactory {
public:
    virtual ~IPowerModeSubscribersFactory() = default;

    // Calls back at each change of the device's power state, with the new mode; an unknown state comes as
    // POWER_MODE_NORMAL.
    virtual std::unique_ptr<Common::Utils::SignalSubscriber<void(DAXCommon::PowerMode)>>
    createPowerModeChangeSignalSubscriber() = 0;

    // Calls back when the device is about to power off, with the mode that the device tells. Any number may be
    // subscribed at a time.
    virtual std::unique_ptr<Common::Utils::SignalSubscriber<void(DAXCommon::PowerMode)>>
    createPowerOffSignalSubscriber() = 0;

    // Calls back when the device has woken up.
    virtual std::unique_ptr<Common::Utils::SignalSubscriber<void()>> createPostWakeUpSignalSubscriber() = 0;
};

} // namespace DAX::Platform
