#include "Platform/SystemAPI/PowerModeSystemAPI/Implementation/PowerOffCbLowLevelSubscriber.h"

#include "Platform/SystemAPI/PowerModeSystemAPI/Implementation/PlatformSignal.h"

namespace DAX::Platform {

PowerOffCbLowLevelSubscriber::~PowerOffCbLowLevelSubscriber() {
    unsubscribeAtEnd("PowerOffCbLowLevelSubscriber");
}

void PowerOffCbLowLevelSubscriber::doSubscribe() {
    subscribeTo(POWER_OFF_SIGNAL, callbackId());
}

int PowerOffCbLowLevelSubscriber::doUnsubscribe() {
    return unsubscribeFrom(POWER_OFF_SIGNAL);
}

} // namespace DAX::Platform
