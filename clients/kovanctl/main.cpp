#include <CLI/CLI.hpp>

#include "kovanctl/Commands.h"

int main(int argc, char** argv) {
    CLI::App app("A person's hands on the simulated device, whose root folder KOVAN_ROOT names.", "kovanctl");
    app.require_subcommand(1);
    app.footer("Exit status: 0 done, 1 refused or absent, 2 wrong usage.");
    clients_common::CommandLine line;
    clients_common::addJsonFlag(app, line);
    kovanctl::addSettingCommands(app, line);
    kovanctl::addPowerCommands(app, line);
    kovanctl::addInfoCommands(app, line);
    kovanctl::addDeviceCommands(app, line);
    kovanctl::addUsbCommands(app, line);
    return clients_common::run(app, line, argc, argv);
}
