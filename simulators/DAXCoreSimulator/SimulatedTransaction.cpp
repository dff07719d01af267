#include "DAXCoreSimulator/SimulatedTransaction.h"

namespace DAXCoreSimulator {

using namespace DAX::Core;

SimulatedTransaction::SimulatedTransaction(std::string proxyId, Scenario scenario,
                                           std::function<Clock::time_point()> now)
    : m_proxyId(std::move(proxyId))
    , m_scenario(std::move(scenario))
    , m_now(std::move(now))
    , m_steps{{m_scenario.search, {}}, {m_scenario.installation, {}}, {m_scenario.finalization, {}}} {}

void SimulatedTransaction::start(StepName step) {
    m_steps[static_cast<std::size_t>(step)].since = m_now();
}

TransactionProgress SimulatedTransaction::progress(StepName name) const {
    const Running& current = running(name);
    if (!current.since) {
        return {};
    }
    const double elapsed = std::chrono::duration<double>(m_now() - *current.since).count();
    if (elapsed < current.step.seconds) {
        return {TRANSACTION_IN_PROGRESS, static_cast<int>(elapsed * 100 / current.step.seconds),
                static_cast<float>(elapsed)};
    }
    const auto seconds = static_cast<float>(current.step.seconds);
    return current.step.succeeds ? TransactionProgress{TRANSACTION_SUCCESS, 100, seconds}
                                 : TransactionProgress{TRANSACTION_FAILED, 100, seconds};
}

SearchResult SimulatedTransaction::searchResult() const {
    SearchResult result;
    result.result = progress(StepName::SEARCH).result;
    if (result.result == TRANSACTION_SUCCESS) {
        result = m_scenario.found;
        result.result = TRANSACTION_SUCCESS;
    }
    return result;
}

} // namespace DAXCoreSimulator
