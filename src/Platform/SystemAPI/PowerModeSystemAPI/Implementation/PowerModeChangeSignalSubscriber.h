#pragma once

#include "DAXCommon/PowerMode.h"
#include "Platform/SystemAPI/PowerModeSystemAPI/Implementation/PowerSubscriber.h"

namespace DAX::Platform {

// Calls back at each change of the device's power state.
class PowerModeChangeSignalSubscriber : public PowerSubscriber<void(DAXCommon::PowerMode)> {
public:
    ~PowerModeChangeSignalSubscriber() override;

private:
    void* doRegisterCallback() override;
    void doSubscribe() override;
    int doUnsubscribe() override;

    int callWrappedCb(int state);
};

} // namespace DAX::Platform
