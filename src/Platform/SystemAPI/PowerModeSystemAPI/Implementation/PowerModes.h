#pragma once

#include <map>

#include <device_power.h>

#include "DAXCommon/PowerMode.h"

namespace DAX::Platform {

// The modes of the device's power states. An unknown state is added when it is first met. Only for the main loop's
// thread.
std::map<power_state_e, DAXCommon::PowerMode>& powerModes();

// The mode for the device's number of a power state; 0 for an unknown one. Only for the main loop's thread.
DAXCommon::PowerMode toPowerMode(int state);

} // namespace DAX::Platform
