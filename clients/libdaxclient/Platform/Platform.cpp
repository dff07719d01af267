// What the code below this library expects of a device, for a process that has no device's library: the log goes to the
// client, and the rest goes nowhere.
#include <array>
#include <cstdarg>
#include <cstdio>

#include <DAXProductionConfig.h>
#include <MetricLogger.h>
#include <dlog.h>

#include "libdaxclient/Implementation/LogScope.h"

namespace {

// The log's numbers: the main log shows four levels by their priority, the system log has the two most urgent ones.
dax::LogLevel levelOf(int logId, int priority) {
    const int systemLog = 2;
    const int warning = 5;
    if (logId != systemLog) {
        return static_cast<dax::LogLevel>(priority - 1);
    }
    return priority > warning ? dax::LogLevel::FTL : dax::LogLevel::ERR;
}

void tell(const dax::detail::LogCallback& callback, dax::LogLevel level, const char* text) noexcept {
    try {
        callback(level, text);
    } catch (...) { // a log line is not worth a call
        return;
    }
}

} // namespace

// NOLINTNEXTLINE(bugprone-reserved-identifier): the name is the device's
extern "C" int __dlog_print(int logId, int priority, const char* /*tag*/, const char* format, ...) {
    const dax::detail::LogCallback* const callback = dax::detail::LogScope::current();
    if (callback != nullptr) {
        std::array<char, 2048> text{};
        va_list arguments;
        va_start(arguments, format);
        std::vsnprintf(text.data(), text.size(), format, arguments);
        va_end(arguments);
        tell(*callback, levelOf(logId, priority), text.data());
    }
    return 0;
}

namespace MetricLogFramework {

CLogger* CLogger::GetInstance() {
    return nullptr;
}

int CLogger::AddEventLogSync(const std::string&, const std::string&, const std::string&, const std::string&) {
    return 0;
}

} // namespace MetricLogFramework

namespace DAX::Common::Debug {

bool isProduction() {
    return true;
}

} // namespace DAX::Common::Debug
