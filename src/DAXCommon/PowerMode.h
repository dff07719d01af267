#pragma once

namespace DAX::DAXCommon {

// The device's power state.
enum PowerMode : int {
    POWER_MODE_NORMAL = 0,
    POWER_MODE_STANDBY = 1,
    POWER_MODE_SUSPEND = 2,
    POWER_MODE_POWER_OFF = 3,
    POWER_MODE_RESTART = 4
};

} // namespace DAX::DAXCommon
