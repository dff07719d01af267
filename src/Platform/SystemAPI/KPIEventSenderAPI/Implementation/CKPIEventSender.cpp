#include <MetricLogger.h>

#include "Common/Logging/LoggingStream.h"
#include "Platform/SystemAPI/KPIEventSenderAPI/IKPIEvent.h"

namespace DAX::Platform::KpiEvent {
namespace {

const char* const APPLICATION_ID = "23_daxinfo";
const int EVENT_TAKEN = 1;
const int NO_LOGGER = 0;

} // namespace

void sendKPIEventToServer(const IKPIEvent& event) {
    MetricLogFramework::CLogger* const logger = MetricLogFramework::CLogger::GetInstance();
    const std::string description = event.getDescription();
    const int result = logger != nullptr
                           ? logger->AddEventLogSync(APPLICATION_ID, event.getName(), event.getCode(), description)
                           : NO_LOGGER;
    if (result != EVENT_TAKEN) {
        DAX_LOG(FTL) << "KPI event send fail : (" << event.getName() << ") Code(" << result << ")";
        return;
    }
    DAX_LOG(INF) << "AddEventLog : " << APPLICATION_ID << "," << event.getName() << "," << event.getCode() << ","
                 << description;
}

} // namespace DAX::Platform::KpiEvent
