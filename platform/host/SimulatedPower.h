#pragma once

#include <optional>

namespace KovanHost {

// What can happen to the simulated device's power. It is written down, for all processes, and what is to be announced
// reaches the subscribers of device_power.h in all of them. std::system_error when it cannot be written.

// Any state from 0 on. Announces it, unless it is the state already.
void setPowerState(int state);

// 0 or greater.
void setWakeUpReason(int reason);

// Announces that the device powers off. Its state stays.
void announcePowerOff(int number);

// Stores the reason, if there is one, and announces the wake-up with the one that holds then, which is the result. The
// state stays.
int wakeUp(std::optional<int> reason);

// Nothing else comes of a request.
void recordRebootRequest(int reason);
void recordPowerOffRequest(int reason);

} // namespace KovanHost
