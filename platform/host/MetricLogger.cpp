#include "MetricLogger.h"

#include <nlohmann/json.hpp>

#include "Border.h"
#include "JsonLines.h"

namespace MetricLogFramework {

namespace {

constexpr int TAKEN = 1;
constexpr int NOT_TAKEN = 0;

} // namespace

CLogger* CLogger::GetInstance() {
    static CLogger logger;
    return &logger;
}

int CLogger::AddEventLogSync(const std::string& application, const std::string& name, const std::string& code,
                             const std::string& description) {
    return KovanHost::atBorder(NOT_TAKEN, [&] {
        const bool written = KovanHost::appendRecord(
            "var/log/kovan/events.jsonl",
            {{"application", application}, {"name", name}, {"code", code}, {"description", description}});
        return written ? TAKEN : NOT_TAKEN;
    });
}

} // namespace MetricLogFramework
