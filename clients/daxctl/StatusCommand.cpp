#include <cstdio>

#include <nlohmann/json.hpp>

#include "clients_common/ExitStatus.h"
#include "clients_common/Output.h"
#include "clients_common/Printable.h"
#include "daxctl/Commands.h"
#include "daxctl/DaemonCommand.h"
#include "daxctl/Failure.h"
#include "daxctl/Session.h"
#include "daxctl/UpgradeTypes.h"

namespace daxctl {

namespace {

nlohmann::ordered_json lastSearchOf(dax::Client& client) {
    const auto date = client.lastSearch();
    return date ? nlohmann::ordered_json(date->toString()) : nlohmann::ordered_json();
}

// Null for what this user may not read.
nlohmann::ordered_json orNull(const boost::optional<bool>& fact) {
    return fact ? nlohmann::ordered_json(*fact) : nlohmann::ordered_json();
}

// The part of the status that only the core knows. A core that cannot be reached does not hide the rest.
bool addCoreFacts(dax::Client& client, nlohmann::ordered_json& status) {
    try {
        status["version"] = client.version();
        auto types = nlohmann::ordered_json::array();
        for (const auto type : client.supportedTypes()) {
            types.push_back(upgradeTypeName(type));
        }
        status["supportedTypes"] = types;
        return true;
    } catch (...) {
        const Failure failure = describeCurrentException();
        status["error"] = failure.toJson();
        status["kind"] = clients_common::KIND_FAILED;
        std::fprintf(stderr, "The update core does not answer: %s\n", failure.toString().c_str());
        return false;
    }
}

std::string joined(const nlohmann::ordered_json& names) {
    std::string text;
    for (const auto& name : names) {
        text += (text.empty() ? "" : ", ") + name.get<std::string>();
    }
    return text;
}

void printLine(const char* label, const std::string& value) {
    std::printf("%-18s%s\n", label, clients_common::printable(value).c_str());
}

std::string factToString(const nlohmann::ordered_json& fact, const char* yes, const char* no) {
    return fact.is_null() ? "unknown, may not be read by this user" : fact.get<bool>() ? yes : no;
}

std::string lockToString(const nlohmann::ordered_json& status) {
    if (status["staleExternalLockSetting"].get<bool>()) {
        return "none; the setting that tells of one is left from a daemon that has ended";
    }
    return factToString(status["blockingExternalLock"], "held, blocks the main application", "none that blocks");
}

void printForPeople(const nlohmann::ordered_json& status) {
    printLine("daemon", status["daemonWasRunning"].get<bool>() ? "running" : "was not running; this has started it");
    const auto& owner = status["owner"];
    printLine("owner", owner.is_null()
                           ? "nobody"
                           : owner["clientName"].get<std::string>() + " with priority " + owner["priority"].dump() +
                                 ", transaction type " + owner["transactionType"].dump());
    printLine("version", status.value("version", "unknown"));
    printLine("supported types", status.contains("supportedTypes") ? joined(status["supportedTypes"]) : "unknown");
    printLine("last search", status["lastSearch"].is_null() ? "none known" : status["lastSearch"].get<std::string>());
    printLine("installation lock", factToString(status["installationLock"], "in force", "no"));
    printLine("external lock", lockToString(status));
}

int runStatus(bool json) {
    dax::Client client = connectToDaemon();
    const DaemonTraces before = lookForTheDaemon(client);
    nlohmann::ordered_json status = {{"daemonWasRunning", before.isRunning},
                                     {"owner", toJson(client.owner())},
                                     {"lastSearch", lastSearchOf(client)},
                                     {"installationLock", orNull(isInstallationLocked())},
                                     {"blockingExternalLock", orNull(isBlockingExternalLockHeld())},
                                     {"staleExternalLockSetting", before.isLockSettingLeft}};
    if (before.isLockSettingLeft) {
        status["blockingExternalLock"] = false;
    }
    const bool complete = addCoreFacts(client, status);
    if (json) {
        clients_common::printJson(status);
    } else {
        printForPeople(status);
    }
    return complete ? clients_common::EXIT_DONE : clients_common::EXIT_REFUSED;
}

} // namespace

void addStatusCommand(clients_common::Command& program) {
    addDaemonCommand(program, "status",
                     "Who holds the service, the device's version, what can be upgraded, the last search, what blocks",
                     runStatus);
}

} // namespace daxctl
