#include <csignal>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include <nlohmann/json.hpp>

#include "clients_common/ExitStatus.h"
#include "clients_common/Output.h"
#include "clients_common/Printable.h"
#include "daxctl/ChildProcess.h"
#include "daxctl/Commands.h"
#include "daxctl/DaemonCommand.h"
#include "daxctl/HeldLock.h"
#include "daxctl/LongOutput.h"
#include "daxctl/Obstacles.h"
#include "daxctl/RequestOptions.h"
#include "daxctl/SilenceGuard.h"

namespace daxctl {

namespace {

bool isDenied(const dax::Error& error) {
    return error.kind() == dax::Error::Kind::EXTERNAL_LOCK_DENIED;
}

int reportDenied(dax::Client& client, bool json) {
    const auto owner = client.owner();
    const std::string reason = whyRefused(owner);
    std::fprintf(stderr, "Denied: %s.\n", clients_common::printable(reason).c_str());
    if (json) {
        clients_common::printJson({{"outcome", "denied"},
                                   {"refusedBecause", reason},
                                   {"owner", toJson(owner)},
                                   {"kind", clients_common::KIND_REFUSED}});
    }
    return clients_common::EXIT_REFUSED;
}

// Throws Refusal when nobody gets it.
void printNumber(dax::LockId id, bool json) {
    LongOutput output;
    if (json) {
        output.stream() << clients_common::jsonText({{"outcome", "acquired"}, {"id", id}}, 2) << '\n';
    } else {
        output.stream() << id << '\n';
    }
    if (!output.flush()) {
        throw clients_common::Refusal("The standard output cannot be written: nobody reads it");
    }
}

int acquire(const Request& request, bool json) {
    dax::Client client = connectToDaemon(request.clientName);
    try {
        const dax::LockId id = client.acquireLock(dax::Priority(request.priority));
        try {
            printNumber(id, json);
        } catch (const clients_common::Refusal&) {
            client.releaseLock(id); // nobody else could
            throw;
        }
        return clients_common::EXIT_DONE;
    } catch (const dax::Error& error) {
        if (!isDenied(error)) {
            throw;
        }
        return reportDenied(client, json);
    }
}

int release(const Request& request, dax::LockId id, bool json) {
    connectToDaemon(request.clientName).releaseLock(id);
    if (json) {
        clients_common::printJson({{"outcome", "released"}, {"id", id}});
    }
    return clients_common::EXIT_DONE;
}

void sayLockIsUnknown(bool json) {
    reportSilence("The update service does not answer. Should it give the lock later, its log has the number.", json);
}

void sayReleaseIsOnItsWay(dax::LockId id, bool json) {
    reportSilence("The update service does not answer. It has been asked to release the lock " + std::to_string(id) +
                      ", and does so when it goes on.",
                  json);
}

int reportEnd(HeldLock& lock, int status, bool json) {
    const bool held = lock.release();
    if (json) {
        nlohmann::ordered_json report = {{"outcome", held ? "held" : "lost"}, {"id", lock.id()}, {"status", status}};
        if (!held) {
            report["kind"] = clients_common::KIND_FAILED;
        }
        clients_common::printJson(report);
    }
    return held ? status : clients_common::EXIT_REFUSED;
}

// With --json, standard output is for the document alone, so the output of the command goes to standard error.
int hold(const Request& request, const std::vector<std::string>& commandLine, bool json) {
    Interruption interruption;
    const ChildOutput output = json ? ChildOutput::TO_ERRORS : ChildOutput::TO_OUTPUT;
    std::optional<SilenceGuard> guard(std::in_place, interruption, [json] { sayLockIsUnknown(json); });
    dax::Client client = connectToDaemon(request.clientName);
    try {
        HeldLock lock(client.lock(dax::Priority(request.priority)));
        guard.reset(); // the command gets the signals, but for one that the guard has taken
        const int status = interruption.requested()
                               ? 128 + SIGTERM
                               : runChild(commandLine, output, interruption, [&lock] { lock.noticeLoss(); });
        guard.emplace(interruption, [id = lock.id(), json] { sayReleaseIsOnItsWay(id, json); });
        return reportEnd(lock, status, json);
    } catch (const dax::Error& error) {
        if (!isDenied(error)) {
            throw;
        }
        return reportDenied(client, json);
    }
}

} // namespace

void addLockCommands(clients_common::Command& program) {
    auto group = program.addGroup("lock", "External locks, which hold upgrades back");
    const auto request = std::make_shared<Request>();

    auto acquireCommand = addDaemonCommand(
        group, "acquire", "Acquire a lock and print its number; it stays until it is released or the daemon ends",
        [request](bool json) { return acquire(*request, json); });
    addRequestOptions(acquireCommand, *request);

    const auto id = std::make_shared<dax::LockId>(0);
    auto releaseCommand = addDaemonCommand(group, "release", "Release a lock",
                                           [request, id](bool json) { return release(*request, *id, json); });
    addRequestOptions(releaseCommand, *request);
    releaseCommand.add("ID", *id, "The lock's number").required();

    const auto commandLine = std::make_shared<std::vector<std::string>>();
    auto holdCommand = addDaemonCommand(
        group, "hold",
        "Hold a lock while COMMAND runs and release it however that ends; the exit status is COMMAND's, or 1 when the "
        "lock was lost meanwhile. Ctrl-C ends COMMAND, the same signal once more kills it",
        [request, commandLine](bool json) { return hold(*request, *commandLine, json); });
    addRequestOptions(holdCommand, *request);
    holdCommand.add("COMMAND", *commandLine, "The command to run, after --").required();

    group.note(
        "The service answers no question for the locks in force, their holders, priorities or ages, so nothing here "
        "lists them. \"daxctl status\" shows whether one blocks the main application. Keep the number that "
        "\"acquire\" prints: without it, the lock stays until the daemon ends.");
}

} // namespace daxctl
