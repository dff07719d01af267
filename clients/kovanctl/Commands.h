#pragma once

#include "clients_common/CommandLine.h"

namespace kovanctl {

// Each adds its commands to the program.
void addSettingCommands(clients_common::Command& program);
void addPowerCommands(clients_common::Command& program);
void addInfoCommands(clients_common::Command& program);
void addDeviceCommands(clients_common::Command& program);
void addUsbCommands(clients_common::Command& program);

} // namespace kovanctl
