#include "kovanctl/Commands.h"

int main(int argc, char** argv) {
    clients_common::Program program("kovanctl",
                                    "A person's hands on the simulated device, whose root folder KOVAN_ROOT names.");
    program.requireCommand();
    program.addVersion();
    program.footer("Exit status: 0 done, 1 refused or absent, 2 wrong usage.");
    kovanctl::addSettingCommands(program);
    kovanctl::addPowerCommands(program);
    kovanctl::addInfoCommands(program);
    kovanctl::addDeviceCommands(program);
    kovanctl::addUsbCommands(program);
    return program.run(argc, argv);
}
