#pragma once

#include <functional>
#include <set>
#include <string>

#include <nlohmann/json.hpp>

#include "ServiceInterface/IServiceManager.h"
#include "daxctl/Interruption.h"
#include "daxctl/Session.h"

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
};

// One run through search, installation and finalization, with its progress shown on standard error. It stops at the
// first step that does not succeed; an interruption cancels the transaction at the core.
class UpgradeRun {
public:
    UpgradeRun(DAX::Service::IServiceManager& manager, const UpgradePlan& plan, Interruption& interruption,
               bool silent);

    // True when every step of the plan succeeded. Exceptions of the daemon and of the core pass.
    bool run();

    // The result: "outcome", and as far as the run got, "search" and "refusedBecause".
    const nlohmann::ordered_json& report() const { return m_report; }

private:
    using Progress = DAX::Service::ServiceTransactionProgress (DAX::Service::IServiceTransaction::*)();

    bool runTransaction(DAX::Service::IServiceTransaction& transaction);
    bool search(DAX::Service::IServiceTransaction& transaction);
    bool step(DAX::Service::IServiceTransaction& transaction, const std::string& name,
              const std::function<void()>& start, Progress progress);
    bool cancel(DAX::Service::IServiceTransaction& transaction, const std::string& what);
    bool follow(DAX::Service::IServiceTransaction& transaction, const std::string& step, Progress progress);
    bool end(const std::string& outcome, const std::string& message);

    DAX::Service::IServiceManager& m_manager;
    const UpgradePlan& m_plan;
    Interruption& m_interruption;
    bool m_silent;
    nlohmann::ordered_json m_report;
};

} // namespace daxctl
