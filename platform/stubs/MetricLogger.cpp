#include "MetricLogger.h"

#include "Call.h"

namespace MetricLogFramework {

CLogger* CLogger::GetInstance() {
    static CLogger logger;
    return KovanStubs::works(__func__) ? &logger : nullptr;
}

int CLogger::AddEventLogSync(const std::string&, const std::string&, const std::string&, const std::string&) {
    const int taken = 1;
    return KovanStubs::answer(__func__, taken);
}

} // namespace MetricLogFramework
