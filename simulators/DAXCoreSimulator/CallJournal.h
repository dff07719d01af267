#pragma once

#include <string>

#include <nlohmann/json_fwd.hpp>

namespace DAXCoreSimulator {

// The record of calls, one JSON line for each: {"time", "method", "sender", "arguments"}. The arguments are an object,
// or null when the method is unknown or its arguments cannot be read. The whole line is in the file before the call is
// answered. A file of 16 MiB is renamed to PATH.1 before the next line, in place of an older one.
class CallJournal {
public:
    // Makes the folders of the file. Throws std::runtime_error when that fails.
    explicit CallJournal(std::string path);

    // Throws std::runtime_error when the line cannot be written.
    void record(const std::string& method, const std::string& sender, const nlohmann::ordered_json& arguments) const;

private:
    std::string m_path;
};

} // namespace DAXCoreSimulator
