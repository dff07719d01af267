#include "Platform/SystemAPI/PowerModeSystemAPI/Implementation/PowerModeChangeSignalSubscriber.h"

#include "Platform/SystemAPI/PowerModeSystemAPI/Implementation/PlatformSignal.h"
#include "Platform/SystemAPI/PowerModeSystemAPI/Implementation/PowerModes.h"

namespace DAX::Platform {
namespace {

const char NAME[] = "PowerModeChangeSignalSubscriber";

} // namespace

PowerModeChangeSignalSubscriber::~PowerModeChangeSignalSubscriber() {
    unsubscribeAtEnd(NAME);
}

void* PowerModeChangeSignalSubscriber::doRegisterCallback() {
    return registerWrapper(NAME, [this](int state) { return callWrappedCb(state); });
}

void PowerModeChangeSignalSubscriber::doSubscribe() {
    subscribeTo(POWER_MODE_CHANGE_SIGNAL, callbackId());
}

int PowerModeChangeSignalSubscriber::doUnsubscribe() {
    return unsubscribeFrom(POWER_MODE_CHANGE_SIGNAL);
}

int PowerModeChangeSignalSubscriber::callWrappedCb(int state) {
    DAX_LOG(INF) << "Power Mode Changed signal received.";
    const DAXCommon::PowerMode mode = toPowerMode(state);
    userCallback()(mode);
    return 0;
}

} // namespace DAX::Platform
