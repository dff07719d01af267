#pragma once

#include <functional>
#include <string>

#include "clients_common/CommandLine.h"

namespace daxctl {

// Adds a command that calls the daemon. An exception that the daemon, the core or the bus raised is shown by its name,
// support code and text, with --json as the document {"error": {…}}, and ends the program with EXIT_REFUSED.
CLI::App& addDaemonCommand(CLI::App& parent, clients_common::CommandLine& line, const std::string& name,
                           const std::string& description, const std::function<int()>& action);

} // namespace daxctl
