#include <device_power.h>

#include "Common/Logging/LoggingStream.h"
#include "Platform/SystemAPI/SystemControlSystemAPI/Implementation/CSystemControl.h"
#include "Platform/SystemAPI/SystemControlSystemAPI/PowerAPIException.h"
#include "Utility/Utils/ErrInfoStream.h"

namespace DAX::Platform {
namespace {

using Common::Utils::errinfo_description;
using Common::Utils::errinfo_errorcode;

const int WAKE_UP_REASON_DAX = 5;
const int WAKE_UP_REASON_MOBILE_BT = 41;

} // namespace

int CSystemControl::m_setWakeUpReason(int reason) {
    const int result = device_power_set_wakeup_reason(reason);
    if (result < 0) {
        DAX_THROW(PowerAPIException(), errinfo_description("device_power_get_wakeup_reason() failed")
                                           << errinfo_errorcode(result));
    }
    DAX_LOG(INF) << "Wake-up has been set to " << reason << ", with result: " << result;
    return result;
}

int CSystemControl::m_getWakeUpReason() {
    const int reason = device_power_get_wakeup_reason();
    if (reason < 0) {
        DAX_THROW(PowerAPIException(), errinfo_description("device_power_get_wakeup_reason() failed")
                                           << errinfo_errorcode(reason));
    }
    DAX_LOG(INF) << "Wake-up reason = " << reason << ".";
    return reason;
}

bool CSystemControl::m_isWakeUpReasonDAX() {
    return m_getWakeUpReason() == WAKE_UP_REASON_DAX;
}

bool CSystemControl::m_isWakeUpReasonStandbyScan() {
    return false;
}

bool CSystemControl::m_isWakeUpReasonMobileBT() {
    return m_getWakeUpReason() == WAKE_UP_REASON_MOBILE_BT;
}

} // namespace DAX::Platform
