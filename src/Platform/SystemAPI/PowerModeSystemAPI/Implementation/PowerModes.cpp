#include "Platform/SystemAPI/PowerModeSystemAPI/Implementation/PowerModes.h"

#include <boost/assign/list_of.hpp>

namespace DAX::Platform {

using DAXCommon::PowerMode;

std::map<power_state_e, PowerMode>& powerModes() {
    static std::map<power_state_e, PowerMode> modes =
        boost::assign::map_list_of(POWER_STATE_NORMAL, DAXCommon::POWER_MODE_NORMAL) //
        (POWER_STATE_STANDBY, DAXCommon::POWER_MODE_STANDBY)                         //
        (POWER_STATE_SUSPEND, DAXCommon::POWER_MODE_SUSPEND)                         //
        (POWER_STATE_POWER_OFF, DAXCommon::POWER_MODE_POWER_OFF)                     //
        (POWER_STATE_RESTART, DAXCommon::POWER_MODE_RESTART);
    return modes;
}

PowerMode toPowerMode(int state) {
    return powerModes()[static_cast<power_state_e>(state)];
}

} // namespace DAX::Platform
