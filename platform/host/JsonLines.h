#pragma once

#include <string>

#include <nlohmann/json.hpp>

namespace KovanHost {

// Appends the record, with the time before its fields, as one line to a file under the root, which is made with its
// folders; whole among other writers' lines. A file that has grown large is set aside before, as appendToLog does.
// False, or std::exception: not written.
bool appendRecord(const std::string& relative, const nlohmann::ordered_json& record);

} // namespace KovanHost
