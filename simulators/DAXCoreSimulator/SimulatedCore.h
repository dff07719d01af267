#pragma once

#include <list>
#include <map>
#include <set>
#include <string>
#include <vector>

#include <boost/optional.hpp>

#include "CoreInterface/SearchingTransactionParameters.h"
#include "DAXCoreSimulator/Scenario.h"
#include "DAXCoreSimulator/SimulatedTransaction.h"

namespace DAXCoreSimulator {

// Implements the core's methods. The scenario is read again at each createTransaction. One that cannot be used is
// reported on standard error, once for the same reason, and the earlier one stays in force. `caller` is the unique bus
// name of the connection.
class SimulatedCore {
public:
    using Items = std::set<std::string>;
    using Bytes = std::vector<unsigned char>;

    // Plays the file, or the built-in scenario when there is no file at `path`. Throws ScenarioError for a file that
    // cannot be used.
    explicit SimulatedCore(std::string path);

    // The fault that is to strike in this call of a method. Calls are counted from 1 since the start.
    Fault faultAt(const std::string& method);

    std::string getCurrentVersion(const std::string& caller);
    std::vector<DAX::DAXCommon::UpgradeType> getSupportedUpgradeTypes(const std::string& caller);
    void scheduleFactoryReset(const std::string& caller);
    std::string createTransaction(const std::string& caller, DAX::Core::SearchingTransactionParameters parameters,
                                  std::string proxyId, const std::string& connectionId);
    void helloMessage(const std::string& caller, const std::string& proxyId);

    // The methods of the transaction. They throw TransactionInvalidatedException to everybody who has not said hello
    // for it.
    boost::optional<bool> isSearchingPossible(const std::string& caller);
    void startSearching(const std::string& caller, const std::string& searchParameter);
    void startModelsSearching(const std::string& caller);
    DAX::Core::TransactionProgress getSearchProgress(const std::string& caller);
    DAX::Core::SearchResult getSearchResult(const std::string& caller);
    std::list<std::string> getModelsSearchResult(const std::string& caller);
    void startInstallation(const std::string& caller, const Items& items);
    DAX::Core::TransactionProgress getInstallationProgress(const std::string& caller);
    void startFinalization(const std::string& caller, const Items& items, const boost::optional<Bytes>& upgradeId,
                           bool flag);
    DAX::Core::TransactionProgress getFinalizationProgress(const std::string& caller);
    void cancelCoreTransaction(const std::string& caller, const std::string& reason);

    // Reads the scenario again. One that cannot be used is reported and changes nothing.
    void refreshScenario();

private:
    SimulatedTransaction& transactionOf(const std::string& caller);

    std::string m_path;
    Scenario m_scenario;
    std::string m_reported; // why the file cannot be used now; empty while it can
    std::map<std::string, int> m_callCounts;
    boost::optional<SimulatedTransaction> m_transaction;
};

} // namespace DAXCoreSimulator
