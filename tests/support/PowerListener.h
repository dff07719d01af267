#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include <device_power.h>

#include "support/MainContext.h"

namespace DAX::Tests {

// Subscribes to all announcements of device_power.h while it lives, and keeps them in order: "state_changed 1",
// "poweroff 3", "post_wakeup 41". One at a time in a process.
class PowerListener {
public:
    PowerListener() {
        require(device_power_subscribe_state_changed(onStateChanged, this));
        require(device_power_subscribe_poweroff(onPowerOff, this));
        require(device_power_subscribe_post_wakeup(onPostWakeUp, this));
    }
    ~PowerListener() {
        device_power_unsubscribe_state_changed(onStateChanged);
        device_power_unsubscribe_poweroff(onPowerOff);
        device_power_unsubscribe_post_wakeup(onPostWakeUp);
    }
    PowerListener(const PowerListener&) = delete;
    PowerListener& operator=(const PowerListener&) = delete;

    // Iterates GLib's default main context until `last` was announced, or a bound has passed, and returns all
    // announcements.
    const std::vector<std::string>& hearUntil(const std::string& last) {
        iterateUntil([&] { return !m_heard.empty() && m_heard.back() == last; });
        return m_heard;
    }

private:
    static void require(int result) {
        if (result != 0) {
            throw std::runtime_error("cannot subscribe: " + std::to_string(result));
        }
    }

    static int hear(const char* name, int number, void* self) {
        static_cast<PowerListener*>(self)->m_heard.push_back(std::string(name) + " " + std::to_string(number));
        return 0;
    }
    static int onStateChanged(int number, void* self) { return hear("state_changed", number, self); }
    static int onPowerOff(int number, void* self) { return hear("poweroff", number, self); }
    static int onPostWakeUp(int number, void* self) { return hear("post_wakeup", number, self); }

    std::vector<std::string> m_heard;
};

} // namespace DAX::Tests
