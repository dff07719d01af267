#include <chrono>
#include <string>
#include <thread>

#include <boost/exception/errinfo_nested_exception.hpp>
#include <boost/exception_ptr.hpp>
#include <device_power.h>

#include "Common/Logging/LoggingStream.h"
#include "Debug/DebugAndTestParameters/DebugAndTestParameters.h"
#include "Platform/SystemAPI/SystemControlSystemAPI/Implementation/CSystemControl.h"
#include "Platform/SystemAPI/SystemControlSystemAPI/PowerAPIException.h"
#include "Platform/SystemAPI/VconfSystemAPI/IVConf.h"
#include "Utility/Utils/ErrInfoStream.h"
#include "Utility/Utils/GenericException.h"

namespace DAX::Platform {
namespace {

using Common::Utils::errinfo_description;
using Common::Utils::errinfo_errorcode;
using Common::Utils::GenericException;
using DAXCommon::DebugAndTestParameters;

const int NORMAL_REASON = 12;
const int FACTORY_RESET_REASON = 14;
const int FORCE_BIT = 0x20000000;

const unsigned int NUMBER_OF_POWER_STATES = 5;

const char POWER_REQUEST_COLD_SHUTDOWN_NAME[] = "org.kovan.tv.dax";

// Makes the calling thread sleep for as long as the debug parameters ask for before the device goes down.
void delay(const char* beforeWhat) {
    const auto seconds =
        DebugAndTestParameters::getDebugAndTestParameters().getCustomIntParam("CSystemControl::delayedShutdown");
    if (seconds) {
        DAX_LOG(INF) << "Waiting " << *seconds << beforeWhat;
        std::this_thread::sleep_for(std::chrono::seconds(*seconds));
    }
}

} // namespace

void CSystemControl::m_shutdown() {
    m_shutdown(NORMAL_REASON);
}

void CSystemControl::m_shutdown(int reason) {
    DAX_LOG(FTL) << "shutdown: " << reason;
    delay(" seconds before shutdown.");
    const int result = device_power_request_poweroff(reason);
    DAX_LOG(INF) << "Request poweroff result: " << result;
    if (result != 0) {
        DAX_THROW(PowerAPIException(), errinfo_description("device_power_request_poweroff failed")
                                           << errinfo_errorcode(result));
    }
}

void CSystemControl::m_forceShutdown() {
    DAX_LOG(INF) << "Power state lock will be ignored.";
    m_shutdown(NORMAL_REASON | FORCE_BIT);
}

void CSystemControl::m_reboot() {
    m_reboot(NORMAL_REASON);
}

void CSystemControl::m_reboot(int reason) {
    DAX_LOG(FTL) << "reboot: " << reason;
    if (DebugAndTestParameters::getDebugAndTestParameters().isNoRebootFlag()) {
        DAX_LOG(INF) << "CSystemControl::reboot(): no reboot performed because NoRebootFlag is set.";
        return;
    }
    delay(" seconds before reboot.");
    m_setColdShutdown();
    const int result = device_power_request_reboot(reason | FORCE_BIT);
    DAX_LOG(INF) << "Request restart result: " << result;
    if (result != 0) {
        DAX_THROW(PowerAPIException(), errinfo_description("device_power_request_reboot failed")
                                           << errinfo_errorcode(result));
    }
}

void CSystemControl::m_rebootWithFactoryResetReason() {
    m_reboot(FACTORY_RESET_REASON);
}

void CSystemControl::m_setColdShutdown() {
    m_setColdShutdown(POWER_REQUEST_COLD_SHUTDOWN_NAME);
}

void CSystemControl::m_setColdShutdown(const std::string& name) {
    try {
        DAX_LOG(INF) << "Setting cold shutdown flag.";
        VConfT<std::string>(POWER_COLD_SHUTDOWN_VCONF_KEY).set(name);
        DAX_LOG(ERR) << "power_suspend flag set: " << POWER_COLD_SHUTDOWN_VCONF_KEY << " = " << name
                     << ". Cold shutdown will be performed as next shutdown.";
    } catch (...) {
        DAX_THROW(GenericException(), boost::errinfo_nested_exception(boost::current_exception()));
    }
}

DAXCommon::PowerMode CSystemControl::m_getCurrentPowerMode() {
    const int state = device_power_get_state();
    if (static_cast<unsigned int>(state) >= NUMBER_OF_POWER_STATES) {
        DAX_THROW(PowerAPIException(), errinfo_description("device_power_get_state() failed")
                                           << errinfo_errorcode(state));
    }
    return static_cast<DAXCommon::PowerMode>(state);
}

void CSystemControl::m_setCurrentPowerMode(DAXCommon::PowerMode mode, bool flag) {
    if (mode >= DAXCommon::POWER_MODE_POWER_OFF) {
        DAX_THROW(PowerAPIException(), errinfo_description("wrong power mode") << errinfo_errorcode(mode));
    }
    device_power_set_state(mode, flag ? 1 : 0);
}

} // namespace DAX::Platform
