#pragma once

#include <string>

namespace MetricLogFramework {

// The device's event reporting.
class CLogger {
public:
    // The process's logger, which belongs to the platform; null when there is none. Any thread may call.
    static CLogger* GetInstance();

    // Sends one event and blocks until it is sent. 1 means that the event was taken, anything else that it was not. Any
    // thread may call.
    int AddEventLogSync(const std::string& application, const std::string& name, const std::string& code,
                        const std::string& description);
};

} // namespace MetricLogFramework
