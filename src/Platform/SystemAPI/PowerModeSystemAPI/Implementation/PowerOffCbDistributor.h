#pragma once

#include <list>

#include "Utility/Utils/RegisterableSingleton.h"
#include "Utility/Utils/SignalDistributor.h"
#include "Utility/Utils/SingletonsID.h"

namespace DAX::Platform {

// Passes the device's power-off signal on to every PowerOffSignalSubscriber. A registered singleton that lives as long
// as one of them.
class PowerOffCbDistributor : public Common::Utils::SignalDistributor<int(int)>,
                              public Common::Utils::RegisterableSingleton {
public:
    // For the register: its id, and the singletons that it needs while it exists.
    static Common::Utils::SingletonsID getID() { return Common::Utils::POWER_OFF_CB_DISTRIBUTOR; }
    static std::list<Common::Utils::SingletonsID> getRequirements() { return {Common::Utils::USER_DATA_REGISTER}; }

    ~PowerOffCbDistributor() override;

protected:
    PowerOffCbDistributor() = default;

private:
    std::unique_ptr<Common::Utils::SignalSubscriber<int(int)>> doCreateLowLevelSubscriber() override;
    std::function<int(int)> doGetMultiCallback() override;

    int multiCallback(int state);
};

} // namespace DAX::Platform
