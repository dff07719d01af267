#pragma once

#include <string>

#include <nlohmann/json_fwd.hpp>

namespace KovanHost {

// Appends the record as one line, with the time before its fields, to a file under the root. Makes the file and its
// folders. Other writers' lines do not break it. A file that has grown large is renamed before, as in appendToLog.
// Returns false, or throws a std::exception, when the line was not written.
bool appendRecord(const std::string& relative, const nlohmann::ordered_json& record);

} // namespace KovanHost
