#pragma once

#include "clients_common/CommandLine.h"

namespace daxctl {

// Each adds one command, or one group of them, to the program.
void addStatusCommand(clients_common::Command& program);
void addUpgradeCommand(clients_common::Command& program);
void addSearchCommand(clients_common::Command& program);
void addLockCommands(clients_common::Command& program);
void addFactoryResetCommand(clients_common::Command& program);
void addInstallationLockCommand(clients_common::Command& program);
void addDecodeCommand(clients_common::Command& program);
void addMonitorCommand(clients_common::Command& program);

} // namespace daxctl
