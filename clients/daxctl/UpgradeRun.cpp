#include "daxctl/UpgradeRun.h"

#include <cstdio>

#include "daxctl/ProgressDisplay.h"

namespace daxctl {

using namespace DAX::Service;
using DAX::DAXCommon::ServiceClientPriority;
using DAX::DAXCommon::ServiceTransactionType;

namespace {

const auto POLL_INTERVAL = std::chrono::milliseconds(50);

std::string hexadecimal(const std::vector<unsigned char>& bytes) {
    std::string text;
    for (const unsigned char byte : bytes) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02x", byte);
        text += digits;
    }
    return text;
}

nlohmann::ordered_json toJson(const SingleUpgradeDescription& upgrade) {
    return {{"upgradeType", static_cast<int>(upgrade.upgradeType)},
            {"upgradeId", hexadecimal(upgrade.upgradeId)},
            {"version", upgrade.version ? nlohmann::ordered_json(*upgrade.version) : nlohmann::ordered_json()},
            {"updateInfo", std::string(upgrade.updateInfo.begin(), upgrade.updateInfo.end())},
            {"kind", static_cast<unsigned int>(upgrade.kind)},
            {"scope", upgrade.scope}};
}

bool isUnderWay(const ServiceTransactionProgress& progress) {
    return progress.result != SERVICE_TRANSACTION_SUCCESS && progress.result != SERVICE_TRANSACTION_FAILED;
}

} // namespace

UpgradeRun::UpgradeRun(IServiceManager& manager, const UpgradePlan& plan, Interruption& interruption, bool silent)
    : m_manager(manager), m_plan(plan), m_interruption(interruption), m_silent(silent), m_report({}) {}

bool UpgradeRun::run() {
    const auto service = m_manager.getService(ServiceClientPriority(m_plan.request.priority), m_plan.request.clientName,
                                              ServiceTransactionType(m_plan.request.transactionType));
    if (!service) {
        const std::string reason = whyRefused(m_manager);
        m_report["refusedBecause"] = reason;
        m_report["owner"] = ownerOf(m_manager);
        return end("refused", "Refused: " + reason + ".");
    }
    const auto transaction = service->startNewTransaction(m_plan.upgradeType);
    if (!transaction) {
        return end("refused", "Refused: the session is no longer valid.");
    }
    const bool done = runTransaction(*transaction);
    service->invalidate("The client has finished.");
    return done;
}

bool UpgradeRun::runTransaction(IServiceTransaction& transaction) {
    const auto possible = transaction.isSearchingPossible();
    if (possible && !*possible) {
        return end("searchNotPossible", "Searching is not possible now.");
    }
    const auto searching = [&] { transaction.startSearching(m_plan.searchParameter); };
    if (!step(transaction, "Search", searching, &IServiceTransaction::getSearchProgress) || !search(transaction)) {
        return false;
    }
    if (m_plan.searchOnly) {
        return end("found", "");
    }
    const auto installing = [&] { transaction.startInstallation(m_plan.items); };
    if (!step(transaction, "Installation", installing, &IServiceTransaction::getInstallationProgress)) {
        return false;
    }
    if (!m_plan.finalize) {
        return end("installed", "Installed; not finalized.");
    }
    const auto finalizing = [&] { transaction.startFinalization(m_plan.items, m_plan.finalizationFlag); };
    return step(transaction, "Finalization", finalizing, &IServiceTransaction::getFinalizationProgress) &&
           end("finalized", "Finalized. The installation lock is in force until the device has started anew.");
}

bool UpgradeRun::search(IServiceTransaction& transaction) {
    const ServiceSearchResult result = transaction.getSearchResult();
    if (result.result != SERVICE_TRANSACTION_SUCCESS || !result.upgrade) {
        return end("nothingFound", "No upgrade was found.");
    }
    m_report["search"] = toJson(*result.upgrade);
    if (!m_silent) {
        std::fprintf(stderr, "Found version %s (scope %d, id %s)\n",
                     result.upgrade->version.value_or("without a number").c_str(), result.upgrade->scope,
                     hexadecimal(result.upgrade->upgradeId).c_str());
    }
    return true;
}

// A call to the daemon can take long, and a step can end at once, so an interruption is looked for before every step.
bool UpgradeRun::step(IServiceTransaction& transaction, const std::string& name, const std::function<void()>& start,
                      Progress progress) {
    if (m_interruption.requested()) {
        return cancel(transaction, name + " was not started");
    }
    start();
    return follow(transaction, name, progress);
}

bool UpgradeRun::cancel(IServiceTransaction& transaction, const std::string& what) {
    transaction.cancelServiceTransaction("Interrupted by the user of daxctl.");
    return end("cancelled", what + "; the transaction has been cancelled at the core.");
}

bool UpgradeRun::follow(IServiceTransaction& transaction, const std::string& step, Progress progress) {
    ProgressDisplay display(step, m_silent);
    for (;;) {
        const ServiceTransactionProgress now = (transaction.*progress)();
        display.show(now);
        if (!isUnderWay(now)) {
            const bool succeeded = now.result == SERVICE_TRANSACTION_SUCCESS;
            display.finish(succeeded ? "done" : "failed");
            return succeeded || end("failed", step + " failed.");
        }
        if (m_interruption.wait(POLL_INTERVAL)) {
            display.finish("interrupted");
            return cancel(transaction, step + " was interrupted");
        }
    }
}

// Ends a run: stores the outcome and shows it. True for an outcome that the plan asked for.
bool UpgradeRun::end(const std::string& outcome, const std::string& message) {
    m_report["outcome"] = outcome;
    if (!m_silent && !message.empty()) {
        std::fprintf(stderr, "%s\n", message.c_str());
    }
    return outcome == "found" || outcome == "installed" || outcome == "finalized";
}

} // namespace daxctl
