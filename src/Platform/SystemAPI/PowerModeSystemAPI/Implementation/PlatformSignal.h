#pragma once

#include <device_power.h>

namespace DAX::Platform {

// One of the device's announcements of power events, and how it is called in messages.
struct PlatformSignal {
    const char* announcement;
    const char* name;
    int (*subscribe)(device_power_callback callback, void* userData);
    int (*unsubscribe)(device_power_callback callback);
};

extern const PlatformSignal POWER_MODE_CHANGE_SIGNAL;
extern const PlatformSignal POWER_OFF_SIGNAL;
extern const PlatformSignal WAKE_UP_SIGNAL;

// Has the device call what is registered under this id of the UserDataRegister, a std::function<int (int)>. Throws
// GenericException when the device refuses.
void subscribeTo(const PlatformSignal& signal, void* callbackId);

// The device's result.
int unsubscribeFrom(const PlatformSignal& signal);

} // namespace DAX::Platform
