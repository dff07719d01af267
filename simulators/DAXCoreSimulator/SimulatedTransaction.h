#pragma once

#include <chrono>
#include <functional>
#include <string>

#include <boost/optional.hpp>

#include "CoreInterface/TransactionProgress.h"
#include "DAXCoreSimulator/Scenario.h"

namespace DAXCoreSimulator {

// One transaction, played by the steady clock: a step that was started is in progress for its time, and then ends as
// the scenario says.
class SimulatedTransaction {
public:
    enum class StepName { SEARCH, INSTALLATION, FINALIZATION };
    using Clock = std::chrono::steady_clock;

    SimulatedTransaction(std::string proxyId, Scenario scenario, std::function<Clock::time_point()> now = &Clock::now);

    const std::string& proxyId() const { return m_proxyId; }
    const Scenario& scenario() const { return m_scenario; }

    // The connection that has said hello; only it may use the transaction.
    void bind(const std::string& connection) { m_owner = connection; }
    bool isOwnedBy(const std::string& connection) const { return m_owner == connection; }

    void start(StepName step);
    DAX::Core::TransactionProgress progress(StepName step) const;

    // What the search finds, with the search's current state as the result.
    DAX::Core::SearchResult searchResult() const;

private:
    struct Running {
        Step step;
        boost::optional<Clock::time_point> since;
    };

    const Running& running(StepName step) const { return m_steps[static_cast<std::size_t>(step)]; }

    std::string m_proxyId;
    boost::optional<std::string> m_owner;
    Scenario m_scenario;
    std::function<Clock::time_point()> m_now;
    Running m_steps[3];
};

} // namespace DAXCoreSimulator
