#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <set>
#include <string>

#include <nlohmann/json.hpp>

#include "DAXCommon/UpgradeType.h"
#include "dax/client.h"
#include "daxctl/Interruption.h"
#include "daxctl/ProgressDisplay.h"
#include "daxctl/Request.h"
#include "daxctl/SilenceGuard.h"

namespace daxctl {

// What the user wants from one run.
struct UpgradePlan {
    Request request;
    DAX::DAXCommon::UpgradeType upgradeType = DAX::DAXCommon::OTN;
    std::string searchParameter;
    std::set<std::string> items;
    bool searchOnly = false;
    bool finalize = true;
    bool finalizationFlag = false;
    ProgressOutput progress;
    std::chrono::milliseconds patience = SilenceGuard::PATIENCE; // with a silent daemon, after an interruption
    bool waits = false;                                          // ask again until the service is granted
    std::optional<int> waitSeconds;                              // but give up after so long
};

// One run through search, installation and finalization, with its progress shown as planned, and what people have to
// know on standard error; silent, it shows only a progress whose style was chosen. It stops at the
// first step that does not succeed; an interruption cancels the transaction at the core. When the daemon is silent
// then, the whole process ends, see SilenceGuard.
class UpgradeRun {
public:
    UpgradeRun(dax::Client& client, const UpgradePlan& plan, Interruption& interruption, bool silent);

    // True when every step of the plan succeeded. dax::Error and dax::Unreachable pass.
    bool run();

    // The result: "outcome", and as far as the run got, "search" and "refusedBecause".
    const nlohmann::ordered_json& report() const { return m_report; }

private:
    using Step = std::function<dax::Outcome(const dax::Waiting&)>;

    std::optional<dax::Session> request();
    bool runSession(dax::Session session);
    bool refused(const dax::Refusal& refusal);
    bool runTransaction(dax::Transaction& transaction);
    bool search(dax::Transaction& transaction);
    bool step(dax::Transaction& transaction, const std::string& name, const Step& run);
    bool follow(const std::string& name, const Step& run);
    ProgressOutput progressOutput() const;
    bool cancelled(const std::string& what);
    bool end(const std::string& outcome, const std::string& message);
    void saySilenceBeforeTheSession() const;
    void saySilence() const;

    dax::Client& m_client;
    const UpgradePlan& m_plan;
    Interruption& m_interruption;
    bool m_silent;
    SilenceGuard* m_guard = nullptr; // of the session
    nlohmann::ordered_json m_report;
};

} // namespace daxctl
