#pragma once

#include <functional>
#include <string>

#include "clients_common/CommandLine.h"

namespace daxctl {

// Adds a command that calls the daemon. An exception of the daemon, the core or the bus is shown with its name, support
// code and text, with --json as the document {"error": {…}}, and ends the program with EXIT_REFUSED.
clients_common::Command addDaemonCommand(clients_common::Command& parent, const std::string& name,
                                         const std::string& description, const std::function<int(bool json)>& action);

} // namespace daxctl
