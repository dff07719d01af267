#include "DAXCoreSimulator/SimulatedCore.h"

#include <iostream>

#include <boost/filesystem/operations.hpp>

#include "DAXCommon/UserInterestExceptions.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/DBUSDefines.h"
#include "Utility/Utils/ErrInfoStream.h"

namespace DAXCoreSimulator {

using DAX::Core::SearchingTransactionParameters;
using DAX::Core::SearchResult;
using DAX::Core::TransactionProgress;
using DAX::UserInterestExceptions::TransactionInvalidatedException;
using StepName = SimulatedTransaction::StepName;

namespace {

// A missing file stands for the built-in scenario.
Scenario scenarioAt(const std::string& path) {
    boost::system::error_code error; // a file that cannot be looked at cannot be read either, which is reported then
    const bool isThere = boost::filesystem::status(path, error).type() != boost::filesystem::file_not_found;
    return isThere ? readScenario(path) : Scenario();
}

} // namespace

SimulatedCore::SimulatedCore(std::string path) : m_path(std::move(path)), m_scenario(scenarioAt(m_path)) {}

void SimulatedCore::refreshScenario() {
    try {
        m_scenario = scenarioAt(m_path);
        m_reported.clear();
    } catch (const ScenarioError& error) {
        if (m_reported != error.what()) {
            m_reported = error.what();
            std::cerr << "DAXCoreSimulator: " << m_reported << "; the earlier scenario goes on" << std::endl;
        }
    }
}

Fault SimulatedCore::faultAt(const std::string& method) {
    const int number = ++m_callCounts[method];
    const auto fault = m_scenario.faults.find(method);
    return fault != m_scenario.faults.end() && fault->second.strikes(number) ? fault->second : Fault();
}

std::string SimulatedCore::getCurrentVersion(const std::string&) {
    return m_scenario.version;
}

std::vector<DAX::DAXCommon::UpgradeType> SimulatedCore::getSupportedUpgradeTypes(const std::string&) {
    return m_scenario.supportedTypes;
}

void SimulatedCore::scheduleFactoryReset(const std::string&) {}

std::string SimulatedCore::createTransaction(const std::string&, SearchingTransactionParameters, std::string proxyId,
                                             const std::string&) {
    if (m_scenario.refusesTransactions) {
        return {};
    }
    m_transaction.emplace(std::move(proxyId), m_scenario);
    return DAX::DAXIPC::DBUSLowLevel::DBUSNames::DBUSCore::DBUSICore::CONNECTION_NAME();
}

void SimulatedCore::helloMessage(const std::string& caller, const std::string& proxyId) {
    if (m_transaction && m_transaction->proxyId() == proxyId) {
        m_transaction->bind(caller);
    }
}

SimulatedTransaction& SimulatedCore::transactionOf(const std::string& caller) {
    if (!m_transaction || !m_transaction->isOwnedBy(caller)) {
        DAX_THROW(TransactionInvalidatedException(), "There is no transaction of " << caller << ".");
    }
    return *m_transaction;
}

boost::optional<bool> SimulatedCore::isSearchingPossible(const std::string& caller) {
    return transactionOf(caller).scenario().searchingPossible;
}

void SimulatedCore::startSearching(const std::string& caller, const std::string&) {
    transactionOf(caller).start(StepName::SEARCH);
}

void SimulatedCore::startModelsSearching(const std::string& caller) {
    transactionOf(caller).start(StepName::SEARCH);
}

TransactionProgress SimulatedCore::getSearchProgress(const std::string& caller) {
    return transactionOf(caller).progress(StepName::SEARCH);
}

SearchResult SimulatedCore::getSearchResult(const std::string& caller) {
    return transactionOf(caller).searchResult();
}

std::list<std::string> SimulatedCore::getModelsSearchResult(const std::string& caller) {
    return transactionOf(caller).scenario().models;
}

void SimulatedCore::startInstallation(const std::string& caller, const Items&) {
    transactionOf(caller).start(StepName::INSTALLATION);
}

TransactionProgress SimulatedCore::getInstallationProgress(const std::string& caller) {
    return transactionOf(caller).progress(StepName::INSTALLATION);
}

void SimulatedCore::startFinalization(const std::string& caller, const Items&, const boost::optional<Bytes>&, bool) {
    transactionOf(caller).start(StepName::FINALIZATION);
}

TransactionProgress SimulatedCore::getFinalizationProgress(const std::string& caller) {
    return transactionOf(caller).progress(StepName::FINALIZATION);
}

void SimulatedCore::cancelCoreTransaction(const std::string& caller, const std::string&) {
    transactionOf(caller);
    m_transaction.reset();
}

} // namespace DAXCoreSimulator
