#pragma once

#include <memory>

#include "DAXCommon/PowerMode.h"
#include "Utility/Utils/SignalSubscriber.h"

namespace DAX::Platform {

// Makes the subscribers to the device's power events, none of which is subscribed yet; the caller owns them. Their
// callbacks run on the main loop's thread. The guards of UserDataRegister and MainLoopSingleton must outlive each, and
// the main loop must be initialized when one is subscribed. subscribe() throws GenericException when the device
// refuses: it takes one power-mode and one wake-up subscriber of a process at a time. Any thread may call.
class IPowerModeSubscribersFactory {
public:
    virtual ~IPowerModeSubscribersFactory() = default;

    // Tells of each change of the device's power state.
    virtual std::unique_ptr<Common::Utils::SignalSubscriber<void(DAXCommon::PowerMode)>>
    createPowerModeChangeSignalSubscriber() = 0;

    // Tells that the device is about to power off. Any number may be subscribed.
    virtual std::unique_ptr<Common::Utils::SignalSubscriber<void(DAXCommon::PowerMode)>>
    createPowerOffSignalSubscriber() = 0;

    // Tells that the device has woken up.
    virtual std::unique_ptr<Common::Utils::SignalSubscriber<void()>> createPostWakeUpSignalSubscriber() = 0;
};

} // namespace DAX::Platform
