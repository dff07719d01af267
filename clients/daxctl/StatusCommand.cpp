#include <cstdio>

#include <nlohmann/json.hpp>

#include "clients_common/ExitStatus.h"
#include "clients_common/Output.h"
#include "clients_common/Printable.h"
#include "daxctl/Commands.h"
#include "daxctl/DaemonCommand.h"
#include "daxctl/Failure.h"
#include "daxctl/InstallationLock.h"
#include "daxctl/Obstacles.h"
#include "daxctl/Request.h"
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

std::string lockToString(const nlohmann::ordered_json& status) {
    const auto& isHeld = status["blockingExternalLock"];
    const auto& isStale = status["staleExternalLockSetting"];
    if (isHeld.is_null()) {
        return "unknown, may not be read by this user";
    }
    if (isStale.is_null()) {
        return "held, blocks the main application, unless its setting is left from a daemon that has ended";
    }
    if (isStale.get<bool>()) {
        return "none; the setting that tells of one is left from a daemon that has ended";
    }
    return isHeld.get<bool>() ? "held, blocks the main application" : "none that blocks";
}

void printForPeople(const nlohmann::ordered_json& status, const SeenInstallationLock& lock) {
    printLine("daemon", status["daemonWasRunning"].get<bool>() ? "running" : "was not running; this has started it");
    const auto& owner = status["owner"];
    printLine("owner", owner.is_null()
                           ? "nobody"
                           : owner["clientName"].get<std::string>() + " with priority " + owner["priority"].dump() +
                                 ", transaction type " + owner["transactionType"].dump());
    printLine("version", status.value("version", "unknown"));
    printLine("supported types", status.contains("supportedTypes") ? joined(status["supportedTypes"]) : "unknown");
    printLine("last search", status["lastSearch"].is_null() ? "none known" : status["lastSearch"].get<std::string>());
    printLine("installation lock", !lock.isInForce ? lock.unknown : *lock.isInForce ? "in force" : "no");
    printLine("external lock", lockToString(status));
}

// A setting tells of a lock. That of a daemon that has ended stays, and the next daemon neither reads nor clears it. So
// while a daemon runs that was there before, nobody can tell whose it is.
void addExternalLock(nlohmann::ordered_json& status, const DaemonTraces& before) {
    const boost::optional<bool> isHeld = isBlockingExternalLockHeld();
    const bool isUncertain = before.isRunning && isHeld.value_or(false);
    status["blockingExternalLock"] = before.isLockSettingLeft ? nlohmann::ordered_json(false) : orNull(isHeld);
    status["staleExternalLockSetting"] =
        isUncertain ? nlohmann::ordered_json() : nlohmann::ordered_json(before.isLockSettingLeft);
}

int runStatus(bool json) {
    dax::Client client = connectToDaemon();
    const DaemonTraces before = lookForTheDaemon(client);
    const SeenInstallationLock lock = seeInstallationLock();
    nlohmann::ordered_json status = {{"daemonWasRunning", before.isRunning},
                                     {"owner", toJson(client.owner())},
                                     {"lastSearch", lastSearchOf(client)},
                                     {"installationLock", orNull(lock.isInForce)}};
    addExternalLock(status, before);
    const bool complete = addCoreFacts(client, status);
    if (json) {
        clients_common::printJson(status);
    } else {
        printForPeople(status, lock);
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
