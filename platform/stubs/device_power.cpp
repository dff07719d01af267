#include "device_power.h"

#include "Call.h"

using KovanStubs::answer;

int device_power_get_state() {
    return answer(__func__, POWER_STATE_NORMAL);
}

int device_power_set_state(int, int) {
    return answer(__func__);
}

int device_power_get_wakeup_reason() {
    return answer(__func__);
}

int device_power_set_wakeup_reason(int) {
    return answer(__func__);
}

int device_power_request_reboot(int) {
    return answer(__func__);
}

int device_power_request_poweroff(int) {
    return answer(__func__);
}

// Nothing is ever announced.

int device_power_subscribe_state_changed(device_power_callback, void*) {
    return answer(__func__);
}

int device_power_unsubscribe_state_changed(device_power_callback) {
    return answer(__func__);
}

int device_power_subscribe_poweroff(device_power_callback, void*) {
    return answer(__func__);
}

int device_power_unsubscribe_poweroff(device_power_callback) {
    return answer(__func__);
}

int device_power_subscribe_post_wakeup(device_power_callback, void*) {
    return answer(__func__);
}

int device_power_unsubscribe_post_wakeup(device_power_callback) {
    return answer(__func__);
}
