#pragma once

#include <string>

namespace MetricLogFramework {

// The device's event reporting.
class CLogger {
public:
    static CLogger* GetInstance();

    // Blocks for the send. 1 means that the event was taken, anything else that it was not. Any thread may call.
    int AddEventLogSync(const std::string& application, const std::string& name, const std::string& code,
                        const std::string& description);
};

} // namespace MetricLogFramework
