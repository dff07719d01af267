#pragma once

#include "Platform/SystemAPI/PowerModeSystemAPI/IPowerModeSubscribersFactory.h"

namespace DAX::Platform {

// The device's own subscribers.
class CPowerModeSubscribersFactory : public IPowerModeSubscribersFactory {
public:
    std::unique_ptr<Common::Utils::SignalSubscriber<void(DAXCommon::PowerMode)>>
    createPowerModeChangeSignalSubscriber() override;
    std::unique_ptr<Common::Utils::SignalSubscriber<void(DAXCommon::PowerMode)>>
    createPowerOffSignalSubscriber() override;
    std::unique_ptr<Common::Utils::SignalSubscriber<void()>> createPostWakeUpSignalSubscriber() override;
};

} // namespace DAX::Platform
