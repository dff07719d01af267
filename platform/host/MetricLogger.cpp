#include "MetricLogger.h"

#include "AppendFile.h"
#include "Border.h"
#include "Root.h"
#include "Timestamp.h"

#include <filesystem>
#include <nlohmann/json.hpp>
#include <unistd.h>

namespace MetricLogFramework {

namespace {

using Json = nlohmann::ordered_json;

constexpr int TAKEN = 1;
constexpr int NOT_TAKEN = 0;

int append(const Json& event) {
    const std::string line = event.dump(-1, ' ', false, Json::error_handler_t::replace);
    const std::filesystem::path file = KovanHost::underRoot("var/log/kovan/events.jsonl");
    std::filesystem::create_directories(file.parent_path());
    const int descriptor = KovanHost::openForAppending(file.string());
    if (descriptor < 0) {
        return NOT_TAKEN;
    }
    const bool written = KovanHost::appendLine(descriptor, line);
    close(descriptor);
    return written ? TAKEN : NOT_TAKEN;
}

} // namespace

CLogger* CLogger::GetInstance() {
    static CLogger logger;
    return &logger;
}

int CLogger::AddEventLogSync(const std::string& application, const std::string& name, const std::string& code,
                             const std::string& description) {
    return KovanHost::atBorder(NOT_TAKEN, [&] {
        return append({{"time", KovanHost::utcTimestamp()},
                       {"application", application},
                       {"name", name},
                       {"code", code},
                       {"description", description}});
    });
}

} // namespace MetricLogFramework
