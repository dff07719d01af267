#include "daxctl/UpgradeRun.h"

#include <chrono>
#include <cstdio>
#include <utility>

#include "Utility/Utils/Hexadecimal.h"
#include "clients_common/Output.h"
#include "clients_common/Printable.h"
#include "daxctl/Obstacles.h"

namespace daxctl {

namespace {

using DAX::Common::Utils::toHexadecimal;

// Five times a second is often enough for eyes.
const auto POLL_INTERVAL = std::chrono::milliseconds(200);

// How soon a refused request is repeated.
const auto REQUEST_INTERVAL = std::chrono::milliseconds(500);

const char* const STOP_REASON = "Interrupted by the user of daxctl.";

nlohmann::ordered_json toJson(const dax::Upgrade& upgrade) {
    return {{"upgradeType", static_cast<int>(upgrade.type)},
            {"upgradeId", toHexadecimal(upgrade.id)},
            {"version", upgrade.version ? nlohmann::ordered_json(*upgrade.version) : nlohmann::ordered_json()},
            {"updateInfo", std::string(upgrade.info.begin(), upgrade.info.end())},
            {"kind", static_cast<unsigned int>(upgrade.kind)},
            {"scope", upgrade.scope}};
}

} // namespace

UpgradeRun::UpgradeRun(dax::Client& client, const UpgradePlan& plan, Interruption& interruption, bool silent)
    : m_client(client), m_plan(plan), m_interruption(interruption), m_silent(silent), m_report({}) {}

bool UpgradeRun::run() {
    try {
        std::optional<dax::Session> session = request();
        if (!session) {
            return end("cancelled", "Interrupted while waiting for the service.");
        }
        return runSession(std::move(*session));
    } catch (const dax::Refusal& refusal) {
        return refused(refusal);
    }
}

bool UpgradeRun::runSession(dax::Session session) {
    SilenceGuard guard(
        m_interruption, [this] { saySilence(); }, m_plan.patience);
    m_guard = &guard;
    // Its end may call the daemon, so that it has to come before that of the guard.
    dax::Session guarded = std::move(session);
    dax::Transaction transaction = guarded.start(static_cast<dax::UpgradeType>(m_plan.upgradeType));
    guard.heard();
    const bool done = runTransaction(transaction);
    guard.heard(); // the session ends now, which is no part of what has been reached
    return done;
}

// Empty after an interruption while it waited.
std::optional<dax::Session> UpgradeRun::request() {
    const auto begin = std::chrono::steady_clock::now();
    std::string told;
    for (;;) {
        try {
            const SilenceGuard guard(
                m_interruption, [this] { saySilenceBeforeTheSession(); }, m_plan.patience);
            return m_client.request(dax::Priority(m_plan.request.priority),
                                    dax::TransactionType(m_plan.request.transactionType));
        } catch (const dax::Refusal& refusal) {
            const bool isOver = m_plan.waitSeconds &&
                                std::chrono::steady_clock::now() - begin >= std::chrono::seconds(*m_plan.waitSeconds);
            if (!m_plan.waits || isOver) {
                throw;
            }
            const std::string reason = whyRefused(refusal);
            if (!m_silent && std::exchange(told, reason) != reason) {
                std::fprintf(stderr, "Waiting: %s.\n", clients_common::printable(reason).c_str());
            }
        }
        if (m_interruption.wait(REQUEST_INTERVAL)) {
            return std::nullopt;
        }
    }
}

bool UpgradeRun::refused(const dax::Refusal& refusal) {
    if (refusal.reason() == dax::Refusal::Reason::SESSION_OVER) {
        return end("refused", "Refused: the session is no longer valid.");
    }
    const std::string reason = whyRefused(refusal);
    const std::string advice = whatToDo(refusal);
    m_report["refusedBecause"] = reason;
    m_report["owner"] = daxctl::toJson(refusal.owner());
    m_report["whatToDo"] = advice;
    return end("refused", "Refused: " + reason + ". " + advice);
}

bool UpgradeRun::runTransaction(dax::Transaction& transaction) {
    if (!transaction.isSearchPossible().value_or(true)) {
        return end("searchNotPossible", "Searching is not possible now.");
    }
    if (!search(transaction)) {
        return false;
    }
    if (m_plan.searchOnly) {
        return end("found", "");
    }
    const auto install = [&](const dax::Waiting& waiting) { return transaction.install(m_plan.items, waiting); };
    if (!step(transaction, "Installation", install)) {
        return false;
    }
    if (!m_plan.finalize) {
        return end("installed", "Installed; not finalized.");
    }
    const auto finalize = [&](const dax::Waiting& waiting) {
        return transaction.finalize(m_plan.items, m_plan.finalizationFlag, waiting);
    };
    return step(transaction, "Finalization", finalize) &&
           end("finalized", "Finalized. The installation lock is in force until the device has started anew.");
}

bool UpgradeRun::search(dax::Transaction& transaction) {
    dax::Found found;
    const auto search = [&](const dax::Waiting& waiting) {
        found = transaction.search(m_plan.searchParameter, waiting);
        return found.outcome;
    };
    if (!step(transaction, "Search", search)) {
        return false;
    }
    if (!found.upgrade) {
        return end("nothingFound", "No upgrade was found.");
    }
    m_report["search"] = toJson(*found.upgrade);
    if (!m_silent) {
        std::fprintf(stderr, "Found version %s (scope %d, id %s)\n",
                     clients_common::printable(found.upgrade->version.value_or("without a number")).c_str(),
                     found.upgrade->scope, toHexadecimal(found.upgrade->id).c_str());
    }
    return true;
}

// A call to the daemon can take long, and a step can end at once, so an interruption is looked for before every step.
bool UpgradeRun::step(dax::Transaction& transaction, const std::string& name, const Step& run) {
    if (m_interruption.requested()) {
        transaction.cancel(STOP_REASON);
        return cancelled(name + " was not started");
    }
    return follow(name, run);
}

ProgressOutput UpgradeRun::progressOutput() const {
    const bool isHidden = m_silent && m_plan.progress.style == ProgressStyle::AUTO;
    return isHidden ? ProgressOutput{ProgressStyle::NONE} : m_plan.progress;
}

// An interruption is looked for as often as the progress.
bool UpgradeRun::follow(const std::string& name, const Step& run) {
    ProgressDisplay display(name, progressOutput());
    dax::StopSource stop;
    dax::Waiting waiting;
    waiting.interval = POLL_INTERVAL;
    waiting.stop = stop.token();
    waiting.onProgress = [&](const dax::Progress& progress) {
        m_guard->heard();
        display.show(progress);
        const bool isUnderWay = progress.state != dax::State::SUCCEEDED && progress.state != dax::State::FAILED;
        if (isUnderWay && m_interruption.requested()) {
            stop.requestStop(STOP_REASON);
        }
    };
    switch (run(waiting)) {
    case dax::Outcome::STOPPED:
        display.finish("interrupted");
        return cancelled(name + " was interrupted");
    case dax::Outcome::FAILED:
        display.finish("failed");
        return end("failed", name + " failed.");
    default:
        display.finish("done");
        return true;
    }
}

// These two are called on another thread, while this object is in a call.
void UpgradeRun::saySilenceBeforeTheSession() const {
    reportInterruption(
        "The update service does not answer. Should it grant the session later, it ends that session itself, "
        "since this client leaves the bus.",
        m_silent);
}

void UpgradeRun::saySilence() const {
    reportInterruption(
        "The update service does not answer. It ends the session itself, since this client leaves the bus.", m_silent);
}

bool UpgradeRun::cancelled(const std::string& what) {
    return end("cancelled", what + "; the transaction has been cancelled at the core.");
}

// Ends a run: stores the outcome and shows it. True for an outcome that the plan asked for.
bool UpgradeRun::end(const std::string& outcome, const std::string& message) {
    m_report["outcome"] = outcome;
    if (!m_silent && !message.empty()) {
        std::fprintf(stderr, "%s\n", clients_common::printable(message).c_str());
    }
    const bool isGood = outcome == "found" || outcome == "installed" || outcome == "finalized";
    if (!isGood) {
        const bool isRefused = outcome == "refused" || outcome == "searchNotPossible";
        m_report["kind"] = isRefused ? clients_common::KIND_REFUSED : clients_common::KIND_FAILED;
    }
    return isGood;
}

} // namespace daxctl
