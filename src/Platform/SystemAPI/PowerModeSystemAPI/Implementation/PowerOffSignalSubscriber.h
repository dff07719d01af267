#pragma once

#include <boost/optional.hpp>

#include "DAXCommon/PowerMode.h"
#include "Platform/SystemAPI/PowerModeSystemAPI/Implementation/PowerSubscriber.h"
#include "Utility/Utils/SingletonsID.h"

namespace DAX::Platform {

// Calls back when the device is about to power off. Any number may exist: the distributor serves them all.
class PowerOffSignalSubscriber : public PowerSubscriber<void(DAXCommon::PowerMode)> {
public:
    ~PowerOffSignalSubscriber() override;

    // Call it once, before the first subscription: it marks the distributor as needed for as long as this object lives.
    void needDistributor();

private:
    void* doRegisterCallback() override;
    void doSubscribe() override;
    int doUnsubscribe() override;

    int callWrappedCb(int state);

    boost::optional<Common::Utils::SingletonsID> m_distributorId; // set while the distributor is marked as needed
};

} // namespace DAX::Platform
