#pragma once

#include <device_power.h>

namespace DAX::Platform {

// One of the device's power events, and its names in messages.
struct PlatformSignal {
    const char* announcement;
    const char* name;
    int (*subscribe)(device_power_callback callback, void* userData);
    int (*unsubscribe)(device_power_callback callback);
};

extern const PlatformSignal POWER_MODE_CHANGE_SIGNAL;
extern const PlatformSignal POWER_OFF_SIGNAL;
extern const PlatformSignal WAKE_UP_SIGNAL;

// From now on the device calls the std::function<int (int)> that the UserDataRegister holds under this id. Throws
// GenericException when the device refuses.
void subscribeTo(const PlatformSignal& signal, void* callbackId);

// Returns the device's result.
int unsubscribeFrom(const PlatformSignal& signal);

} // namespace DAX::Platform
