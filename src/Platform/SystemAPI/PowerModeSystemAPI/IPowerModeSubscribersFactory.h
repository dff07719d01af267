#pragma once

#include <memory>

#include "DAXCommon/PowerMode.h"
#include "Utility/Utils/SignalSubscriber.h"

namespace DAX {
namespace Platform {

// Makes the subscribers to the device's power events. Their callbacks run on the main loop's thread.
class IPowerModeSubscribersFactory {
public:
    virtual ~IPowerModeSubscribersFactory() = default;

    virtual std::unique_ptr<Common::Utils::SignalSubscriber<void(DAXCommon::PowerMode)>>
    createPowerModeChangeSignalSubscriber() = 0;
    virtual std::unique_ptr<Common::Utils::SignalSubscriber<void(DAXCommon::PowerMode)>>
    createPowerOffSignalSubscriber() = 0;
    virtual std::unique_ptr<Common::Utils::SignalSubscriber<void()>> createPostWakeUpSignalSubscriber() = 0;
};

} // namespace Platform
} // namespace DAX
