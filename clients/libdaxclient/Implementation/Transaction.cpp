#include <algorithm>
#include <utility>

#include "libdaxclient/Implementation/MovedFrom.h"
#include "libdaxclient/Implementation/TransactionCore.h"
#include "libdaxclient/Implementation/Values.h"

namespace dax {

using DAX::Service::IServiceTransaction;

namespace {

bool hasEnded(const Progress& progress) {
    return progress.state == State::SUCCEEDED || progress.state == State::FAILED;
}

} // namespace

namespace detail {

TransactionCore::TransactionCore(const SessionCore& session, std::shared_ptr<IServiceTransaction> transaction)
    : m_context(session.context()), m_contact(session.contact()), m_transaction(std::move(transaction)) {}

Progress TransactionCore::searchProgress() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const Progress progress =
        callLocked([](IServiceTransaction& transaction) { return toClient(transaction.getSearchProgress()); });
    m_hasSearchEnded = hasEnded(progress);
    return progress;
}

void TransactionCore::throwUnlessSearchHasEnded() const {
    if (!m_hasSearchEnded) {
        throw std::logic_error("The search has not ended, as far as searchProgress() has told.");
    }
}

} // namespace detail

Transaction::Transaction(std::unique_ptr<detail::TransactionCore> core) noexcept : m_core(std::move(core)) {}
Transaction::Transaction(Transaction&&) noexcept = default;
Transaction& Transaction::operator=(Transaction&&) noexcept = default;
Transaction::~Transaction() = default;

detail::TransactionCore& Transaction::core() const {
    return detail::insideOf(m_core);
}

void Transaction::cancel(const std::string& reason) {
    core().call([&reason](IServiceTransaction& transaction) { transaction.cancelServiceTransaction(reason); });
}

std::optional<bool> Transaction::isSearchPossible() {
    return core().call(
        [](IServiceTransaction& transaction) { return detail::toStandard(transaction.isSearchingPossible()); });
}

void Transaction::startSearch(const std::string& parameter) {
    core().startSearch([&parameter](IServiceTransaction& transaction) { transaction.startSearching(parameter); });
}

void Transaction::startModelsSearch() {
    core().startSearch([](IServiceTransaction& transaction) { transaction.startModelsSearching(); });
}

Progress Transaction::searchProgress() {
    return core().searchProgress();
}

std::optional<Upgrade> Transaction::searchResult() {
    return core().callAfterSearch(
        [](IServiceTransaction& transaction) { return detail::toClient(transaction.getSearchResult()); });
}

std::vector<std::string> Transaction::modelsSearchResult() {
    return core().call([](IServiceTransaction& transaction) {
        const std::list<std::string> models = transaction.getModelsSearchResult();
        return std::vector<std::string>(models.begin(), models.end());
    });
}

void Transaction::startInstallation(const std::set<std::string>& items) {
    core().callAfterSearch([&items](IServiceTransaction& transaction) { transaction.startInstallation(items); });
}

Progress Transaction::installationProgress() {
    return core().call(
        [](IServiceTransaction& transaction) { return detail::toClient(transaction.getInstallationProgress()); });
}

void Transaction::startFinalization(const std::set<std::string>& items, bool flag) {
    core().call([&items, flag](IServiceTransaction& transaction) { transaction.startFinalization(items, flag); });
}

Progress Transaction::finalizationProgress() {
    return core().call(
        [](IServiceTransaction& transaction) { return detail::toClient(transaction.getFinalizationProgress()); });
}

namespace {

Outcome stopped(Transaction& transaction, const StopToken& stop) {
    transaction.cancel(stop.reason());
    return Outcome::STOPPED;
}

// One step from its start to its end.
template <class Start>
Outcome run(Transaction& transaction, const Start& start, Progress (Transaction::*progress)(), const Waiting& waiting) {
    if (waiting.stop.isStopped()) {
        return stopped(transaction, waiting.stop);
    }
    start();
    for (;;) {
        const Progress now = (transaction.*progress)();
        if (waiting.onProgress) {
            waiting.onProgress(now);
        }
        if (hasEnded(now)) {
            return now.state == State::SUCCEEDED ? Outcome::SUCCEEDED : Outcome::FAILED;
        }
        if (waiting.stop.waitFor(std::max(waiting.interval, std::chrono::milliseconds(1)))) {
            return stopped(transaction, waiting.stop);
        }
    }
}

} // namespace

Found Transaction::search(const std::string& parameter, const Waiting& waiting) {
    const Outcome outcome = run(
        *this, [&] { startSearch(parameter); }, &Transaction::searchProgress, waiting);
    return {outcome, outcome == Outcome::SUCCEEDED ? searchResult() : std::nullopt};
}

FoundModels Transaction::searchModels(const Waiting& waiting) {
    const Outcome outcome = run(
        *this, [&] { startModelsSearch(); }, &Transaction::searchProgress, waiting);
    return {outcome, outcome == Outcome::SUCCEEDED ? modelsSearchResult() : std::vector<std::string>()};
}

Outcome Transaction::install(const std::set<std::string>& items, const Waiting& waiting) {
    return run(
        *this, [&] { startInstallation(items); }, &Transaction::installationProgress, waiting);
}

Outcome Transaction::finalize(const std::set<std::string>& items, bool flag, const Waiting& waiting) {
    return run(
        *this, [&] { startFinalization(items, flag); }, &Transaction::finalizationProgress, waiting);
}

} // namespace dax
