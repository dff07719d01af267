#include <cstdio>
#include <memory>

#include <boost/filesystem/exception.hpp>
#include <nlohmann/json.hpp>
#include <unistd.h>

#include "Platform/Product/IProductInfo.h"
#include "clients_common/ExitStatus.h"
#include "clients_common/Output.h"
#include "clients_common/Printable.h"
#include "daxctl/Commands.h"
#include "daxctl/InstallationLock.h"

namespace daxctl {

namespace {

using Record = InstallationLock::Record;
using clients_common::printable;
using clients_common::Refusal;

void printLine(const char* label, const std::string& value) {
    std::printf("%-18s%s\n", label, printable(value).c_str());
}

std::string installing(const InstallationLock& lock) {
    if (!lock.inForce) {
        return lock.unknown;
    }
    switch (lock.record) {
    case Record::VERIFIED:
        return lock.installing;
    case Record::TORN:
        return "unknown: the file is torn (" + std::to_string(lock.size) + " bytes)";
    case Record::UNREADABLE:
        break;
    }
    return "unknown: " + lock.reason;
}

void printForPeople(const InstallationLock& lock) {
    if (!lock.inForce) {
        printLine("installation lock", lock.unknown);
        return;
    }
    printLine("installation lock", *lock.inForce ? "in force" : "no");
    if (!*lock.inForce) {
        return;
    }
    printLine("since", inUtc(lock.since));
    printLine("installing", installing(lock));
    printLine("file", lock.file);
    if (lock.record == Record::TORN) {
        std::fprintf(stderr,
                     "The file was not written to its end, as on a full disk, or has changed since. The lock is "
                     "in force all the same: its file exists. Make sure that nothing is being installed; then "
                     "root releases it with 'daxctl installation-lock release --yes'.\n");
    }
}

int show(bool json) {
    const InstallationLock lock = lookAtInstallationLock();
    if (json) {
        clients_common::printJson(lock.toJson());
    } else {
        printForPeople(lock);
    }
    return lock.inForce ? clients_common::EXIT_DONE : clients_common::EXIT_REFUSED;
}

int release(bool isSure, bool json) {
    if (!isSure) {
        throw clients_common::WrongUsage("release lets upgrades begin although one may be unfinished; --yes says that "
                                         "you are sure");
    }
    if (::geteuid() != 0) {
        throw Refusal("only root may release the installation lock");
    }
    const InstallationLock lock = lookAtInstallationLock();
    if (!lock.inForce.value_or(true)) { // one that cannot be seen refuses everyone, too
        throw Refusal("no installation lock is in force");
    }
    try {
        DAX::Platform::IProductInfo::releaseInstallationLock();
    } catch (const boost::filesystem::filesystem_error& error) {
        throw Refusal("the installation lock stays: " + lock.file + ": " + error.code().message());
    }
    if (json) {
        clients_common::printJson({{"outcome", "released"}, {"was", lock.toJson()}});
    } else {
        std::fprintf(stderr, "The installation lock has been released. It stood for: %s\n",
                     printable(installing(lock)).c_str());
    }
    return clients_common::EXIT_DONE;
}

} // namespace

void addInstallationLockCommand(clients_common::Command& program) {
    auto command =
        program.addCommand("installation-lock",
                           "The lock that a finalized upgrade leaves: whether it is in force, since when, and "
                           "what was being installed",
                           show);
    const auto isSure = std::make_shared<bool>(false);
    auto releaseCommand =
        command.addCommand("release", "Remove the lock, so that upgrades can begin again; for root only",
                           [isSure](bool json) { return release(*isSure, json); });
    releaseCommand.addFlag("--yes", *isSure, "Needed: nobody else checks that no upgrade is being installed");
}

} // namespace daxctl
