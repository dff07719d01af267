#pragma once

#include "Platform/SystemAPI/PowerModeSystemAPI/Implementation/PowerSubscriber.h"

namespace DAX::Platform {

// Calls back when the device has woken up.
class WakeUpCbSubscriber : public PowerSubscriber<void()> {
public:
    ~WakeUpCbSubscriber() override;

private:
    void* doRegisterCallback() override;
    void doSubscribe() override;
    int doUnsubscribe() override;
};

} // namespace DAX::Platform
