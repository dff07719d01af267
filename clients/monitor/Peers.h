#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace monitor {

// The program behind a connection.
struct Process {
    std::uint32_t pid = 0;
    std::string name; // empty when nobody can tell it any more
};

// Knows the programs behind connections.
class Processes {
public:
    virtual ~Processes() = default;

    // Nothing when it is not known.
    virtual std::optional<Process> processOf(const std::string& connection) = 0;
};

} // namespace monitor
