#include <cstdio>
#include <memory>

#include <nlohmann/json.hpp>

#include "DAXCommon/UpgradeType.h"
#include "DAXCommon/UpgradeTypeNames.h"
#include "clients_common/ExitStatus.h"
#include "clients_common/Output.h"
#include "clients_common/Printable.h"
#include "daxctl/Commands.h"
#include "daxctl/DaemonCommand.h"
#include "daxctl/LongOutput.h"
#include "daxctl/RequestOptions.h"
#include "daxctl/UpgradeRun.h"

namespace daxctl {

namespace {

enum class ProgressTarget { ERRORS, OUTPUT };

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

void addProgressOptions(clients_common::Command& command, UpgradePlan& plan, ProgressTarget& target) {
    command.addNamed("--progress", plan.progress.style,
                     std::map<std::string, ProgressStyle>{{"auto", ProgressStyle::AUTO},
                                                          {"bar", ProgressStyle::BAR},
                                                          {"plain", ProgressStyle::PLAIN},
                                                          {"json", ProgressStyle::JSON},
                                                          {"none", ProgressStyle::NONE}},
                     "auto",
                     "How the progress is shown: auto is a bar on a terminal, plain lines elsewhere and nothing with "
                     "--json; json is one line a change");
    command.addNamed(
        "--progress-to", target,
        std::map<std::string, ProgressTarget>{{"stderr", ProgressTarget::ERRORS}, {"stdout", ProgressTarget::OUTPUT}},
        "stderr", "Where the progress is shown");
}

int printFound(const nlohmann::ordered_json& found) {
    std::printf("version %s\nscope   %d\nkind    %d\nid      %s\n",
                found["version"].is_null() ? "none"
                                           : clients_common::printable(found["version"].get<std::string>()).c_str(),
                found["scope"].get<int>(), found["kind"].get<int>(), found["upgradeId"].get<std::string>().c_str());
    return clients_common::EXIT_DONE;
}

// A bus can be silent, too.
dax::Client connect(const UpgradePlan& plan, Interruption& interruption, bool json) {
    const SilenceGuard guard(interruption, [json] { reportInterruption("The bus does not answer.", json); });
    return connectToDaemon(plan.request.clientName);
}

int runPlan(const UpgradePlan& plan, bool json) {
    Interruption interruption;
    dax::Client client = connect(plan, interruption, json);
    UpgradeRun run(client, plan, interruption, json);
    const bool succeeded = run.run();
    if (json) {
        if (!printUnlessInterrupted(clients_common::jsonText(run.report(), 2) + '\n', interruption)) {
            return clients_common::EXIT_REFUSED;
        }
    } else if (succeeded && plan.searchOnly) {
        printFound(run.report()["search"]);
    }
    return succeeded ? clients_common::EXIT_DONE : clients_common::EXIT_REFUSED;
}

// Standard output is for the document alone.
int runUpgrade(UpgradePlan plan, ProgressTarget target, bool json) {
    if (target == ProgressTarget::OUTPUT) {
        if (json) {
            throw clients_common::WrongUsage("--progress-to=stdout and --json both need standard output");
        }
        plan.progress.stream = stdout;
    }
    return runPlan(plan, json);
}

} // namespace

void addUpgradeCommand(clients_common::Command& program) {
    const auto plan = std::make_shared<UpgradePlan>();
    const auto target = std::make_shared<ProgressTarget>(ProgressTarget::ERRORS);
    auto command = addDaemonCommand(program, "upgrade", "Run a whole upgrade: search, installation, finalization",
                                    [plan, target](bool json) { return runUpgrade(*plan, *target, json); });
    addPlanOptions(command, *plan);
    addProgressOptions(command, *plan, *target);
    command.addWithOptionalNumber("--wait", plan->waits, plan->waitSeconds, "SECONDS",
                                  "Ask again until the service is granted, for at most so long");
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
