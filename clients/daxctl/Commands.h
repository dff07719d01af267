#pragma once

#include "clients_common/CommandLine.h"

namespace daxctl {

// Each adds one command, or one group of them, to `app`; a command that is chosen becomes `line.chosen`.
void addStatusCommand(CLI::App& app, clients_common::CommandLine& line);
void addUpgradeCommand(CLI::App& app, clients_common::CommandLine& line);
void addSearchCommand(CLI::App& app, clients_common::CommandLine& line);
void addLockCommands(CLI::App& app, clients_common::CommandLine& line);
void addFactoryResetCommand(CLI::App& app, clients_common::CommandLine& line);

} // namespace daxctl
