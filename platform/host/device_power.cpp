#include "device_power.h"

#include <cerrno>

#include "Border.h"
#include "PowerFile.h"
#include "PowerSubscriptions.h"
#include "SimulatedPower.h"

namespace {

using KovanHost::PowerSubscriptions;

constexpr int FAILED = -1;

int change(void (*function)(int), int number) {
    return KovanHost::atBorder(FAILED, [=] {
        function(number);
        return 0;
    });
}

int subscribe(const std::string& signal, device_power_callback callback, void* userData) {
    return callback == nullptr ? -EINVAL : KovanHost::atBorder(FAILED, [&] {
        return PowerSubscriptions::get().subscribe(signal, callback, userData);
    });
}

int unsubscribe(const std::string& signal, device_power_callback callback) {
    return KovanHost::atBorder(FAILED, [&] { return PowerSubscriptions::get().unsubscribe(signal, callback); });
}

} // namespace

int device_power_get_state() {
    return KovanHost::atBorder(FAILED, [] { return KovanHost::knownPower().state; });
}

// Every state is entered at once, whatever the flag says.
int device_power_set_state(int state, int) {
    const bool askable = state >= 0 && state < POWER_STATE_POWER_OFF;
    return askable ? change(KovanHost::setPowerState, state) : -EINVAL;
}

int device_power_get_wakeup_reason() {
    return KovanHost::atBorder(FAILED, [] { return KovanHost::knownPower().wakeUpReason; });
}

int device_power_set_wakeup_reason(int reason) {
    return reason >= 0 ? change(KovanHost::setWakeUpReason, reason) : -EINVAL;
}

int device_power_request_reboot(int reason) {
    return change(KovanHost::recordRebootRequest, reason);
}

int device_power_request_poweroff(int reason) {
    return change(KovanHost::recordPowerOffRequest, reason);
}

int device_power_subscribe_state_changed(device_power_callback callback, void* userData) {
    return subscribe(KovanHost::STATE_CHANGED, callback, userData);
}

int device_power_unsubscribe_state_changed(device_power_callback callback) {
    return unsubscribe(KovanHost::STATE_CHANGED, callback);
}

int device_power_subscribe_poweroff(device_power_callback callback, void* userData) {
    return subscribe(KovanHost::POWER_OFF, callback, userData);
}

int device_power_unsubscribe_poweroff(device_power_callback callback) {
    return unsubscribe(KovanHost::POWER_OFF, callback);
}

int device_power_subscribe_post_wakeup(device_power_callback callback, void* userData) {
    return subscribe(KovanHost::POST_WAKEUP, callback, userData);
}

int device_power_unsubscribe_post_wakeup(device_power_callback callback) {
    return unsubscribe(KovanHost::POST_WAKEUP, callback);
}
