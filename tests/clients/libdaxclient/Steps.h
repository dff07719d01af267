#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <dax/client.h>

namespace DAX::Tests {

const char* const CLIENT_NAME = "library test";

// A client with a session and a transaction whose search has ended.
struct OpenClient {
    explicit OpenClient(dax::Options options = {})
        : client(CLIENT_NAME, std::move(options))
        , session(client.request(dax::Priority::MAIN_APPLICATION))
        , transaction(session.start(dax::UpgradeType::OTN)) {
        transaction.startSearch();
        transaction.searchProgress();
    }

    dax::Client client;
    dax::Session session;
    dax::Transaction transaction;
};

// What the call gives in time: a machine that is busy with others may need more than an impatient client waits. Throws
// what the call throws otherwise, and its time-out after half a minute.
template <class Call>
auto inTime(const Call& call) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    for (;;) {
        try {
            return call();
        } catch (const dax::Unreachable& failure) {
            if (failure.reason() != dax::Unreachable::Reason::TIMED_OUT || std::chrono::steady_clock::now() > end) {
                throw;
            }
        }
    }
}

// A public operation that makes one call of the method, perhaps after others.
struct Step {
    std::string method;
    std::function<void(OpenClient&)> run;
};

// One for each of the 23 methods.
inline const std::vector<Step>& steps() {
    static const std::vector<Step> all{
        {"getService", [](OpenClient& open) { open.client.request(dax::Priority(5)); }},
        {"helloMessage", [](OpenClient& open) { open.session.start(dax::UpgradeType::USB); }},
        {"getServiceOwner", [](OpenClient& open) { open.client.owner(); }},
        {"getSupportedUpgradeTypes", [](OpenClient& open) { open.client.supportedTypes(); }},
        {"getLastSearchingForUpgradeDate", [](OpenClient& open) { open.client.lastSearch(); }},
        {"getCurrentVersion", [](OpenClient& open) { open.client.version(); }},
        {"acquireExternalLock", [](OpenClient& open) { open.client.lock(dax::Priority(5)).detach(); }},
        {"releaseExternalLock", [](OpenClient& open) { open.client.releaseLock(1); }},
        {"scheduleFactoryReset", [](OpenClient& open) { open.client.scheduleFactoryReset(); }},
        {"getClientPriority", [](OpenClient& open) { open.session.priority(); }},
        {"startNewTransaction", [](OpenClient& open) { open.session.start(dax::UpgradeType::USB); }},
        {"isSearchingPossible", [](OpenClient& open) { open.transaction.isSearchPossible(); }},
        {"startSearching", [](OpenClient& open) { open.transaction.startSearch("x"); }},
        {"startModelsSearching", [](OpenClient& open) { open.transaction.startModelsSearch(); }},
        {"getSearchProgress", [](OpenClient& open) { open.transaction.searchProgress(); }},
        {"getSearchResult",
         [](OpenClient& open) {
             open.transaction.searchProgress();
             open.transaction.searchResult();
         }},
        {"getModelsSearchResult", [](OpenClient& open) { open.transaction.modelsSearchResult(); }},
        {"startInstallation",
         [](OpenClient& open) {
             open.transaction.searchProgress();
             open.transaction.startInstallation({"main"});
         }},
        {"getInstallationProgress", [](OpenClient& open) { open.transaction.installationProgress(); }},
        {"startFinalization", [](OpenClient& open) { open.transaction.startFinalization({"main"}, true); }},
        {"getFinalizationProgress", [](OpenClient& open) { open.transaction.finalizationProgress(); }},
        {"cancelServiceTransaction", [](OpenClient& open) { open.transaction.cancel("no longer wanted"); }},
        {"invalidate", [](OpenClient& open) { open.session.end("no longer wanted"); }},
    };
    return all;
}

} // namespace DAX::Tests
