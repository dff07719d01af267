#pragma once

#include <set>
#include <string>

#include "monitor/BusEvent.h"

namespace daxctl {

// What the user wants of `daxctl monitor`.
struct MonitorOptions {
    bool service = false;
    bool core = false;
    std::set<std::string> methods;
    bool failures = false;
    std::string readPath;
    std::string writePath;
    std::string diagramPath;
    bool toScale = false;

    // Those that are shown: without a choice, both.
    std::set<monitor::Side> sides() const;

    // Throws WrongUsage when they do not go together: methods that do not exist, files that would overwrite each other.
    void check() const;
};

} // namespace daxctl
