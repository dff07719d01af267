#pragma once

#include <optional>

namespace KovanHost {

// What can happen to the simulated device's power. It is stored for all processes, and announcements reach the
// subscribers of device_power.h in all of them. Each function throws std::system_error when it cannot be stored.

// Sets the state, any number from 0 on, and announces it unless it is the state already.
void setPowerState(int state);

// Stores the wake-up reason, 0 or greater.
void setWakeUpReason(int reason);

// Announces that the device powers off. The state does not change.
void announcePowerOff(int number);

// Stores the reason, if one is given, and announces the wake-up with the reason that is then stored. Returns that
// reason. The state does not change.
int wakeUp(std::optional<int> reason);

// Stores a request for a restart or a power-off; it has no other effect.
void recordRebootRequest(int reason);
void recordPowerOffRequest(int reason);

} // namespace KovanHost
