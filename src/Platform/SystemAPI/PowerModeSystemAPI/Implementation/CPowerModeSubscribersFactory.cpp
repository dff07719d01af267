#include "Platform/SystemAPI/PowerModeSystemAPI/CPowerModeSubscribersFactory.h"

#include "Platform/SystemAPI/PowerModeSystemAPI/Implementation/PowerModeChangeSignalSubscriber.h"
#include "Platform/SystemAPI/PowerModeSystemAPI/Implementation/PowerOffSignalSubscriber.h"
#include "Platform/SystemAPI/PowerModeSystemAPI/Implementation/WakeUpCbSubscriber.h"

namespace DAX::Platform {

using Common::Utils::SignalSubscriber;
using DAXCommon::PowerMode;

std::unique_ptr<SignalSubscriber<void(PowerMode)>>
CPowerModeSubscribersFactory::createPowerModeChangeSignalSubscriber() {
    return std::make_unique<PowerModeChangeSignalSubscriber>();
}

std::unique_ptr<SignalSubscriber<void(PowerMode)>> CPowerModeSubscribersFactory::createPowerOffSignalSubscriber() {
    auto subscriber = std::make_unique<PowerOffSignalSubscriber>();
    subscriber->needDistributor();
    return subscriber;
}

std::unique_ptr<SignalSubscriber<void()>> CPowerModeSubscribersFactory::createPostWakeUpSignalSubscriber() {
    return std::make_unique<WakeUpCbSubscriber>();
}

} // namespace DAX::Platform
