#pragma once

#include "Platform/SystemAPI/PowerModeSystemAPI/Implementation/PowerSubscriber.h"
#include "Utility/Utils/SingletonProperty.h"

namespace DAX::Platform {

// The process's one subscription to the device's power-off signal; the distributor owns it. To make a second one while
// the first exists throws GenericException.
class PowerOffCbLowLevelSubscriber : public PowerSubscriber<int(int)>,
                                     private Common::Utils::SingletonProperty<PowerOffCbLowLevelSubscriber> {
public:
    ~PowerOffCbLowLevelSubscriber() override;

private:
    void doSubscribe() override;
    int doUnsubscribe() override;
};

} // namespace DAX::Platform
