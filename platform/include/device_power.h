#pragma once

// The device's power: its state, why it woke up, requests to restart or power off, and announcements of all that.
// Announcements are made on GLib's default main context.

#ifdef __cplusplus
extern "C" {
#endif

// clang-format off
#ifdef __cplusplus
typedef enum power_state_e : int { // any number may come with an announcement
#else
typedef enum power_state_e {
#endif
    POWER_STATE_NORMAL = 0,
    POWER_STATE_STANDBY = 1,
    POWER_STATE_SUSPEND = 2,
    POWER_STATE_POWER_OFF = 3,
    POWER_STATE_RESTART = 4
} power_state_e;
// clang-format on

// The function that an announcement calls, with a number that says more about the event (a power_state_e for a change
// of the state) and the data given at the subscription. Its result is ignored. It must not throw.
typedef int (*device_power_callback)(int number, void* user_data);

// The current power_state_e. Negative: failed.
int device_power_get_state(void);

// Asks for a state below POWER_STATE_POWER_OFF; `flag` asks for it at once. Negative: failed.
int device_power_set_state(int state, int flag);

// The code of what woke the device up, 0 or greater. Negative: failed.
int device_power_get_wakeup_reason(void);
int device_power_set_wakeup_reason(int reason);

// Asks the device to restart or to power off, which it does some time after the call. 0: accepted. Any other: refused.
int device_power_request_reboot(int reason);
int device_power_request_poweroff(int reason);

// Each pair takes one subscription for each callback. 0: subscribed. -17: the callback is subscribed already. Any
// other: failed. An announcement that is under way on another thread may still call after the unsubscription.
int device_power_subscribe_state_changed(device_power_callback callback, void* user_data);
int device_power_unsubscribe_state_changed(device_power_callback callback);

int device_power_subscribe_poweroff(device_power_callback callback, void* user_data);
int device_power_unsubscribe_poweroff(device_power_callback callback);

int device_power_subscribe_post_wakeup(device_power_callback callback, void* user_data);
int device_power_unsubscribe_post_wakeup(device_power_callback callback);

#ifdef __cplusplus
}
#endif
