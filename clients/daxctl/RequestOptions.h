#pragma once

#include <CLI/CLI.hpp>

#include "daxctl/Session.h"

namespace daxctl {

// --name and --priority: who asks.
inline void addRequestOptions(CLI::App& command, Request& request) {
    command.add_option("--name", request.clientName, "The name under which the service is asked for")
        ->capture_default_str();
    command.add_option("--priority", request.priority, "The rank of this client; a higher one takes the service over")
        ->capture_default_str();
}

} // namespace daxctl
