#include "Platform/SystemAPI/PowerModeSystemAPI/CPowerModeSubscribersFactory.h"

#include "Platform/SystemAPI/PowerModeSystemAPI/Implementation/PowerSubscriber.h"

namespace DAX {
namespace Platform {

using Common::Utils::SignalSubscriber;
using DAXCommon::PowerMode;

std::unique_ptr<SignalSubscriber<void(PowerMode)>>
CPowerModeSubscribersFactory::createPowerModeChangeSignalSubscriber() {
    return std::make_unique<PowerSubscriber<void(PowerMode)>>("PowerModeChangeSignalSubscriber");
}

std::unique_ptr<SignalSubscriber<void(PowerMode)>> CPowerModeSubscribersFactory::createPowerOffSignalSubscriber() {
    return std::make_unique<PowerSubscriber<void(PowerMode)>>("PowerOffSignalSubscriber");
}

std::unique_ptr<SignalSubscriber<void()>> CPowerModeSubscribersFactory::createPostWakeUpSignalSubscriber() {
    return std::make_unique<PowerSubscriber<void()>>("WakeUpCbSubscriber");
}

} // namespace Platform
} // namespace DAX
