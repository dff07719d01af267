#include "Platform/SystemAPI/SystemControlSystemAPI/Implementation/CSystemControl.h"

#include <sys/resource.h>
#include <unistd.h>

#include "Common/Logging/LoggingStream.h"
#include "Debug/DebugAndTestParameters/DebugAndTestParameters.h"

namespace DAX::Platform {
namespace {

using DAXCommon::DebugAndTestParameters;

const int FOREGROUND_NICENESS = 0;
const int BACKGROUND_NICENESS = 19;

} // namespace

const char* CSystemControl::m_DAXRevisionDescription() {
    return "Changelist: 0, EmulatedProductVersion: ., UI_TYPE=EFL_UI, CMakeTime: 1764727676";
}

bool CSystemControl::m_setProcessPriority(ProcessPriority priority) {
    const bool foreground = priority == ProcessPriority::FOREGROUND;
    const int result =
        setpriority(PRIO_PROCESS, static_cast<id_t>(getpid()), foreground ? FOREGROUND_NICENESS : BACKGROUND_NICENESS);
    DAX_LOG(INF) << (foreground ? "Setting priority level to FOREGROUND, returnCode: "
                                : "Setting priority level to BACKGROUND, returnCode: ")
                 << result;
    return result == 0;
}

bool CSystemControl::m_isAccountSiginMandatory() {
    DAX_LOG(DBG) << "Calling m_isAccountSiginMandatory()";
    return false;
}

int CSystemControl::m_getDetailsNotificationType() {
    const int type =
        DebugAndTestParameters::getDebugAndTestParameters().getCustomIntParam("CSystemControl::notiDetailsType", 0);
    DAX_LOG(INF) << "Notification type for details popup is: " << type;
    return type;
}

} // namespace DAX::Platform
