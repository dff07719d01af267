#include "Platform/SystemAPI/PowerModeSystemAPI/Implementation/WakeUpCbSubscriber.h"

#include "Platform/SystemAPI/PowerModeSystemAPI/Implementation/PlatformSignal.h"

namespace DAX::Platform {
namespace {

const char NAME[] = "WakeUpCbSubscriber";

} // namespace

WakeUpCbSubscriber::~WakeUpCbSubscriber() {
    unsubscribeAtEnd(NAME);
}

void* WakeUpCbSubscriber::doRegisterCallback() {
    return registerWrapper(NAME, [this](int) {
        userCallback()();
        return 0;
    });
}

void WakeUpCbSubscriber::doSubscribe() {
    subscribeTo(WAKE_UP_SIGNAL, callbackId());
}

int WakeUpCbSubscriber::doUnsubscribe() {
    return unsubscribeFrom(WAKE_UP_SIGNAL);
}

} // namespace DAX::Platform
