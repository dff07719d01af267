#include "Platform/SystemAPI/PowerModeSystemAPI/Implementation/PlatformSignal.h"

#include "Common/Logging/LoggingStream.h"
#include "Utility/Utils/ErrInfoStream.h"
#include "Utility/Utils/GenericException.h"
#include "Utility/Utils/UserDataRegister.h"

namespace DAX::Platform {
namespace {

using Common::Utils::GenericException;
using Common::Utils::UserDataRegister;

const int ALREADY_SUBSCRIBED = -17;
const device_power_callback CALLBACK = &UserDataRegister::GenericFunctorCallback<int(int)>::call<0>;

} // namespace

const PlatformSignal POWER_MODE_CHANGE_SIGNAL{"Power Mode changed", "Power Mode Change",
                                              device_power_subscribe_state_changed,
                                              device_power_unsubscribe_state_changed};
const PlatformSignal POWER_OFF_SIGNAL{"Power Off", "Power Off", device_power_subscribe_poweroff,
                                      device_power_unsubscribe_poweroff};
const PlatformSignal WAKE_UP_SIGNAL{"Wake Up", "Wake Up", device_power_subscribe_post_wakeup,
                                    device_power_unsubscribe_post_wakeup};

void subscribeTo(const PlatformSignal& signal, void* callbackId) {
    DAX_LOG(INF) << "Subscribing for " << signal.announcement << " signal.";
    const int result = signal.subscribe(CALLBACK, callbackId);
    if (result == 0) {
        return;
    }
    const char* const problem = result == ALREADY_SUBSCRIBED ? "Already subscribed" : "Cannot subscribe";
    DAX_LOG(ERR) << problem << " for " << signal.name << " signal. Error code: " << result << ".";
    DAX_THROW(GenericException(), problem << " for " << signal.name << " signal. Error code: " << result);
}

int unsubscribeFrom(const PlatformSignal& signal) {
    DAX_LOG(INF) << "Unsubscribing from " << signal.name << " signal.";
    return signal.unsubscribe(CALLBACK);
}

} // namespace DAX::Platform
