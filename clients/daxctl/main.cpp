#include <cstdlib>

#include "daxctl/Commands.h"

int main(int argc, char** argv) {
    // The library's log is meant for services. A person at a terminal gets it only on request.
    setenv("KOVAN_DLOG", "none", 0);

    clients_common::Program program("daxctl", "A person's client of the update service on the system bus.");
    program.requireCommand();
    program.addVersion();
    program.footer(
        "Exit status: 0 done, 1 refused or failed, 2 wrong usage. DBUS_SYSTEM_BUS_ADDRESS names another bus.");
    daxctl::addStatusCommand(program);
    daxctl::addUpgradeCommand(program);
    daxctl::addSearchCommand(program);
    daxctl::addLockCommands(program);
    daxctl::addFactoryResetCommand(program);
    daxctl::addInstallationLockCommand(program);
    daxctl::addDecodeCommand(program);
    daxctl::addMonitorCommand(program);
    return program.run(argc, argv);
}
