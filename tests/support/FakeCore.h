#pragma once

#include <functional>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <boost/exception/enable_current_exception.hpp>
#include <boost/optional.hpp>

#include "CoreInterface/ICore.h"
#include "CoreInterface/ICoreTransaction.h"

namespace DAX::Tests {

// An update core in memory. The test holds the script; the factory, the core and the transactions share it.
//
// Knobs: the fields are the answers and may be changed at any time. `on` runs an action at every call of an operation,
// before the answer. `fail` makes every call of it throw, `failOnce` only the next one. `observer` is told of every
// call, so that calls can be put in order with what other fakes record.
//
// Record: `calls()` has one text for each call of the factory, the core and the transactions, in order: the operation
// and its arguments, as in "startInstallation({a, b})". Texts are unchanged, numbers decimal, flags 0 or 1.
//
// Any thread may call the fakes; the knobs belong to the test's thread, while no call runs.
class FakeCoreScript {
public:
    std::vector<DAXCommon::UpgradeType> supportedUpgradeTypes{DAXCommon::OTN, DAXCommon::USB};
    std::string currentVersion = "1000";
    bool refusesTransactions = false; // makes createTransaction answer with an empty pointer
    boost::optional<bool> searchingPossible = true;
    Core::TransactionProgress searchProgress;
    Core::TransactionProgress installationProgress;
    Core::TransactionProgress finalizationProgress;
    Core::SearchResult searchResult;
    std::list<std::string> models;

    std::function<void(const std::string& call)> observer;

    void on(const std::string& operation, std::function<void()> action) { m_actions[operation] = std::move(action); }

    template <class E>
    void fail(const std::string& operation, const E& exception) {
        on(operation, [exception] { throw boost::enable_current_exception(exception); });
    }

    template <class E>
    void failOnce(const std::string& operation, const E& exception) {
        on(operation, [this, operation, exception] {
            m_actions.erase(operation);
            throw boost::enable_current_exception(E(exception));
        });
    }

    void mend(const std::string& operation) { m_actions.erase(operation); }

    std::vector<std::string> calls() const {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_calls;
    }

    // The calls since the last call of this function.
    std::vector<std::string> takeCalls() {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return std::exchange(m_calls, {});
    }

    // How many cores and transactions exist now.
    int liveCores() const { return m_liveCores.count(); }
    int liveTransactions() const { return m_liveTransactions.count(); }

private:
    friend class FakeCoreFactory;
    friend class FakeCore;
    friend class FakeCoreTransaction;

    // Counts the objects that hold it.
    class Population {
    public:
        std::shared_ptr<void> join() const { return m_all; }
        int count() const { return static_cast<int>(m_all.use_count()) - 1; }

    private:
        std::shared_ptr<void> m_all = std::make_shared<int>();
    };

    template <class... Args>
    void called(const std::string& operation, const Args&... args) {
        std::ostringstream text;
        [[maybe_unused]] const char* separator = "";
        ((text << std::exchange(separator, ", "), write(text, args)), ...);
        record(operation + "(" + text.str() + ")");
        const auto found = m_actions.find(operation);
        if (found != m_actions.end()) {
            const std::function<void()> action = found->second; // a copy, since the action may remove itself
            action();
        }
    }

    void record(const std::string& call) {
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_calls.push_back(call);
        }
        if (observer) {
            observer(call);
        }
    }

    template <class T>
    static void write(std::ostream& text, const T& value) {
        text << value;
    }
    static void write(std::ostream& text, const Core::SearchingTransactionParameters& parameters) {
        text << "upgradeType " << parameters.upgradeType << ", transactionType " << parameters.transactionType
             << ", cellular " << parameters.isCellularConnectionAllowed << ", upgraded "
             << parameters.wasAnySuccessfulUpgrade;
    }
    static void write(std::ostream& text, const std::set<std::string>& items) { writeAll(text, items); }
    static void write(std::ostream& text, const boost::optional<std::vector<unsigned char>>& upgradeId) {
        if (upgradeId) {
            writeAll(text, std::vector<int>(upgradeId->begin(), upgradeId->end()));
        } else {
            text << "none";
        }
    }

    template <class Container>
    static void writeAll(std::ostream& text, const Container& values) {
        const char* separator = "{";
        for (const auto& value : values) {
            text << std::exchange(separator, ", ") << value;
        }
        text << (values.empty() ? "{}" : "}");
    }

    std::map<std::string, std::function<void()>> m_actions;
    Population m_liveCores;
    Population m_liveTransactions;

    mutable std::mutex m_mutex; // guards m_calls
    std::vector<std::string> m_calls;
};

class FakeCoreTransaction : public Core::ICoreTransaction {
public:
    explicit FakeCoreTransaction(std::shared_ptr<FakeCoreScript> script)
        : m_script(std::move(script)), m_population(m_script->m_liveTransactions.join()) {}

    boost::optional<bool> isSearchingPossible() override {
        m_script->called("isSearchingPossible");
        return m_script->searchingPossible;
    }
    void startSearching(std::string searchParameter) override { m_script->called("startSearching", searchParameter); }
    void startModelsSearching() override { m_script->called("startModelsSearching"); }
    Core::TransactionProgress getSearchProgress() override {
        m_script->called("getSearchProgress");
        return m_script->searchProgress;
    }
    Core::SearchResult getSearchResult() override {
        m_script->called("getSearchResult");
        return m_script->searchResult;
    }
    std::list<std::string> getModelsSearchResult() override {
        m_script->called("getModelsSearchResult");
        return m_script->models;
    }
    void startInstallation(const std::set<std::string>& items) override {
        m_script->called("startInstallation", items);
    }
    Core::TransactionProgress getInstallationProgress() override {
        m_script->called("getInstallationProgress");
        return m_script->installationProgress;
    }
    void startFinalization(const std::set<std::string>& items, boost::optional<std::vector<unsigned char>> upgradeId,
                           bool finalizationFlag) override {
        m_script->called("startFinalization", items, upgradeId, finalizationFlag);
    }
    Core::TransactionProgress getFinalizationProgress() override {
        m_script->called("getFinalizationProgress");
        return m_script->finalizationProgress;
    }
    void cancelCoreTransaction(const std::string& reason) override {
        m_script->called("cancelCoreTransaction", reason);
    }

private:
    std::shared_ptr<FakeCoreScript> m_script;
    std::shared_ptr<void> m_population;
};

class FakeCore : public Core::ICore {
public:
    explicit FakeCore(std::shared_ptr<FakeCoreScript> script)
        : m_script(std::move(script)), m_population(m_script->m_liveCores.join()) {}

    std::vector<DAXCommon::UpgradeType> getSupportedUpgradeTypes() override {
        m_script->called("getSupportedUpgradeTypes");
        return m_script->supportedUpgradeTypes;
    }
    std::shared_ptr<Core::ICoreTransaction>
    createTransaction(Core::SearchingTransactionParameters parameters) override {
        m_script->called("createTransaction", parameters);
        return m_script->refusesTransactions ? nullptr : std::make_shared<FakeCoreTransaction>(m_script);
    }
    std::string getCurrentVersion() const override {
        m_script->called("getCurrentVersion");
        return m_script->currentVersion;
    }
    void scheduleFactoryReset() override { m_script->called("scheduleFactoryReset"); }

private:
    std::shared_ptr<FakeCoreScript> m_script;
    std::shared_ptr<void> m_population;
};

class FakeCoreFactory : public Core::ICore::ICoreFactory {
public:
    explicit FakeCoreFactory(std::shared_ptr<FakeCoreScript> script) : m_script(std::move(script)) {}

    std::unique_ptr<Core::ICore> create() override {
        m_script->called("create");
        return std::make_unique<FakeCore>(m_script);
    }

private:
    std::shared_ptr<FakeCoreScript> m_script;
};

} // namespace DAX::Tests
