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

bool printDocument(const nlohmann::ordered_json& document, Interruption& interruption) {
    return printUnlessInterrupted(clients_common::jsonText(document, 2) + '\n', interruption);
}

// The guard is over as soon as the daemon has answered.
int reportDenied(dax::Client& client, std::optional<SilenceGuard>& guard, Interruption& interruption, bool json) {
    const auto owner = client.owner();
    guard.reset();
    const std::string reason = whyRefused(owner);
    std::fprintf(stderr, "Denied: %s.\n", clients_common::printable(reason).c_str());
    if (json) {
        printDocument({{"outcome", "denied"},
                       {"refusedBecause", reason},
                       {"owner", toJson(owner)},
                       {"kind", clients_common::KIND_REFUSED}},
                      interruption);
    }
    return clients_common::EXIT_REFUSED;
}

bool printNumber(dax::LockId id, Interruption& interruption, bool json) {
    return json ? printDocument({{"outcome", "acquired"}, {"id", id}}, interruption)
                : printUnlessInterrupted(std::to_string(id) + '\n', interruption);
}

int release(const Request& request, dax::LockId id, bool json) {
    connectToDaemon(request.clientName).releaseLock(id);
    if (json) {
        clients_common::printJson({{"outcome", "released"}, {"id", id}});
    }
    return clients_common::EXIT_DONE;
}

void sayLockIsUnknown(bool json) {
    reportInterruption("The update service does not answer. Should it give the lock later, its log has the number.",
                       json);
}

void sayReleaseIsOnItsWay(dax::LockId id, bool json) {
    reportInterruption("The update service does not answer. It has been asked to release the lock " +
                           std::to_string(id) + ", and does so when it goes on.",
                       json);
}

// A lock whose number nobody gets is given back: nobody else could release it.
int keepOrRelease(dax::Client& client, dax::LockId id, Interruption& interruption, bool json) {
    const auto giveBack = [&] {
        const SilenceGuard guard(interruption, [id, json] { sayReleaseIsOnItsWay(id, json); });
        client.releaseLock(id);
    };
    if (interruption.requested()) {
        giveBack();
        reportInterruption("The lock " + std::to_string(id) + " has been released.", json);
        return clients_common::EXIT_REFUSED;
    }
    try {
        if (printNumber(id, interruption, json)) {
            return clients_common::EXIT_DONE;
        }
    } catch (const clients_common::Refusal&) {
        giveBack();
        throw;
    }
    giveBack();
    return clients_common::EXIT_REFUSED;
}

int acquire(const Request& request, bool json) {
    Interruption interruption;
    std::optional<SilenceGuard> guard(std::in_place, interruption, [json] { sayLockIsUnknown(json); });
    dax::Client client = connectToDaemon(request.clientName);
    try {
        const dax::LockId id = client.acquireLock(dax::Priority(request.priority));
        guard.reset();
        return keepOrRelease(client, id, interruption, json);
    } catch (const dax::Error& error) {
        if (!isDenied(error)) {
            throw;
        }
        return reportDenied(client, guard, interruption, json);
    }
}

ChildEnd runUnlessInterrupted(const std::vector<std::string>& commandLine, ChildOutput output,
                              Interruption& interruption, HeldLock& lock) {
    if (interruption.requested()) {
        std::fprintf(stderr, "Interrupted; %s was not started.\n", clients_common::printable(commandLine[0]).c_str());
        return {128 + interruption.first(), false};
    }
    return runChild(commandLine, output, interruption, [&lock] { lock.noticeLoss(); });
}

int reportEnd(const ChildEnd& end, dax::LockId id, bool held, Interruption& interruption, bool json) {
    nlohmann::ordered_json document = {{"outcome", held ? "held" : "lost"}, {"id", id}, {"status", end.status}};
    if (!end.wasStarted) {
        document["started"] = false;
    }
    if (!held || !end.wasStarted) {
        document["kind"] = clients_common::KIND_FAILED;
    }
    if (json && !printDocument(document, interruption)) {
        return clients_common::EXIT_REFUSED;
    }
    return held ? end.status : clients_common::EXIT_REFUSED;
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
        const ChildEnd end = runUnlessInterrupted(commandLine, output, interruption, lock);
        guard.emplace(interruption, [id = lock.id(), json] { sayReleaseIsOnItsWay(id, json); });
        const bool held = lock.release();
        guard.reset(); // the daemon has nothing more to do with it
        return reportEnd(end, lock.id(), held, interruption, json);
    } catch (const dax::Error& error) {
        if (!isDenied(error)) {
            throw;
        }
        return reportDenied(client, guard, interruption, json);
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
