#include <cstdio>
#include <memory>

#include <nlohmann/json.hpp>

#include "DAXCommon/UpgradeType.h"
#include "DAXCommon/UpgradeTypeNames.h"
#include "clients_common/ExitStatus.h"
#include "clients_common/Output.h"
#include "daxctl/Commands.h"
#include "daxctl/DaemonCommand.h"
#include "daxctl/RequestOptions.h"
#include "daxctl/UpgradeRun.h"

namespace daxctl {

namespace {

void addPlanOptions(clients_common::Command& command, UpgradePlan& plan) {
    addRequestOptions(command, plan.request);
    command
        .add("--transaction-type", plan.request.transactionType,
             "The purpose of the session; a search of type 2 records its date")
        .showsDefault();
    command.addNamed("--type", plan.upgradeType, DAX::DAXCommon::upgradeTypesByName(), "OTN",
                     "Where the upgrade comes from: OTA is over the air, OTN over the network, USB a stick");
    command.add("--search-parameter", plan.searchParameter, "Passed to the core unchanged");
}

int printFound(const nlohmann::ordered_json& found) {
    std::printf("version %s\nscope   %d\nkind    %d\nid      %s\n",
                found["version"].is_null() ? "none" : found["version"].get<std::string>().c_str(),
                found["scope"].get<int>(), found["kind"].get<int>(), found["upgradeId"].get<std::string>().c_str());
    return clients_common::EXIT_DONE;
}

int runPlan(const UpgradePlan& plan, bool json) {
    Interruption interruption;
    dax::Client client = connectToDaemon(plan.request.clientName);
    UpgradeRun run(client, plan, interruption, json);
    const bool succeeded = run.run();
    if (json) {
        clients_common::printJson(run.report());
    } else if (succeeded && plan.searchOnly) {
        printFound(run.report()["search"]);
    }
    return succeeded ? clients_common::EXIT_DONE : clients_common::EXIT_REFUSED;
}

} // namespace

void addUpgradeCommand(clients_common::Command& program) {
    const auto plan = std::make_shared<UpgradePlan>();
    auto command = addDaemonCommand(program, "upgrade", "Run a whole upgrade: search, installation, finalization",
                                    [plan](bool json) { return runPlan(*plan, json); });
    addPlanOptions(command, *plan);
    command.add("--item", plan->items, "What to install; may be given several times; without it, everything");
    command.addFlag("!--no-finalize", plan->finalize, "Stop after the installation");
    command.addFlag("--finalization-flag", plan->finalizationFlag, "Passed to the core with the finalization");
}

void addSearchCommand(clients_common::Command& program) {
    const auto plan = std::make_shared<UpgradePlan>();
    plan->searchOnly = true;
    auto command = addDaemonCommand(program, "search", "Look for an upgrade and tell what was found",
                                    [plan](bool json) { return runPlan(*plan, json); });
    addPlanOptions(command, *plan);
}

} // namespace daxctl
