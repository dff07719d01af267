#pragma once

#include "clients_common/CommandLine.h"

namespace kovanctl {

// Each adds its commands to `app`; a command that is chosen becomes `line.chosen`.
void addSettingCommands(CLI::App& app, clients_common::CommandLine& line);
void addPowerCommands(CLI::App& app, clients_common::CommandLine& line);
void addInfoCommands(CLI::App& app, clients_common::CommandLine& line);
void addDeviceCommands(CLI::App& app, clients_common::CommandLine& line);
void addUsbCommands(CLI::App& app, clients_common::CommandLine& line);

} // namespace kovanctl
