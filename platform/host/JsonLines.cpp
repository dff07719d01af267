#include "JsonLines.h"

#include <nlohmann/json.hpp>

#include "AppendFile.h"
#include "Root.h"
#include "TextFile.h"
#include "Timestamp.h"

namespace KovanHost {

bool appendRecord(const std::string& relative, const nlohmann::ordered_json& record) {
    nlohmann::ordered_json line = {{"time", utcTimestamp()}};
    line.update(record);
    const std::string path = underRoot(relative);
    makeFolderOf(path);
    return appendToLog(path, line.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace));
}

} // namespace KovanHost
