#include <cstdlib>

#include <CLI/CLI.hpp>

#include "DAXIPC/IDAXIPC.h"
#include "daxctl/Commands.h"

int main(int argc, char** argv) {
    // The log of the library is for services; a person at a terminal asks for it.
    setenv("KOVAN_DLOG", "none", 0);
    DAX::DAXIPC::IDAXIPC::initialize();

    CLI::App app("A person's client of the update service on the system bus.", "daxctl");
    app.require_subcommand(1);
    app.footer("Exit status: 0 done, 1 refused or failed, 2 wrong usage. DBUS_SYSTEM_BUS_ADDRESS names another bus.");
    clients_common::CommandLine line;
    clients_common::addJsonFlag(app, line);
    daxctl::addStatusCommand(app, line);
    daxctl::addUpgradeCommand(app, line);
    daxctl::addSearchCommand(app, line);
    daxctl::addLockCommands(app, line);
    daxctl::addFactoryResetCommand(app, line);
    return clients_common::run(app, line, argc, argv);
}
