#include "SimulatedPower.h"

#include "PowerFile.h"

namespace KovanHost {

void setPowerState(int state) {
    changePower([state](Power& power) {
        if (power.state != state) {
            power.state = state;
            addRecord(power.announcements, STATE_CHANGED, state);
        }
    });
}

void setWakeUpReason(int reason) {
    changePower([reason](Power& power) { power.wakeUpReason = reason; });
}

void announcePowerOff(int number) {
    changePower([number](Power& power) { addRecord(power.announcements, POWER_OFF, number); });
}

int wakeUp(std::optional<int> reason) {
    int announced = 0;
    changePower([&](Power& power) {
        power.wakeUpReason = announced = reason.value_or(power.wakeUpReason);
        addRecord(power.announcements, POST_WAKEUP, announced);
    });
    return announced;
}

void recordRebootRequest(int reason) {
    changePower([reason](Power& power) { addRecord(power.requests, REBOOT_REQUEST, reason); });
}

void recordPowerOffRequest(int reason) {
    changePower([reason](Power& power) { addRecord(power.requests, POWER_OFF_REQUEST, reason); });
}

} // namespace KovanHost
