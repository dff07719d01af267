#include <cstdio>

#include <nlohmann/json.hpp>

#include "clients_common/ExitStatus.h"
#include "clients_common/Output.h"
#include "daxctl/Commands.h"
#include "daxctl/DaemonCommand.h"
#include "daxctl/Request.h"

namespace daxctl {

void addFactoryResetCommand(clients_common::Command& program) {
    addDaemonCommand(program, "factory-reset", "Have the core schedule a factory reset", [](bool json) -> int {
        connectToDaemon().scheduleFactoryReset();
        if (json) {
            clients_common::printJson({{"outcome", "scheduled"}});
        } else {
            std::fprintf(stderr, "A factory reset has been scheduled.\n");
        }
        return clients_common::EXIT_DONE;
    });
}

} // namespace daxctl
