#pragma once

#include "Service/ServiceManager/Implementation/CServiceTransaction.h"
#include "ServiceFixture.h"

namespace DAX::Tests {

// A transaction over the fake core, made with the parameters. The journal begins after that.
class TransactionFixture : public ServiceFixture {
protected:
    std::unique_ptr<Service::IServiceTransaction> makeTransaction(int upgradeType = DAXCommon::OTN,
                                                                  int transactionType = 0) {
        Core::SearchingTransactionParameters parameters;
        parameters.upgradeType = static_cast<DAXCommon::UpgradeType>(upgradeType);
        parameters.transactionType = purpose(transactionType);
        auto transaction = std::make_unique<Service::ServiceManager::CServiceTransaction>(core, parameters);
        forget();
        script->takeCalls();
        return transaction;
    }

    // Sets what the core finds from now on.
    void coreFinds(const boost::optional<std::string>& version, int scope = 0,
                   const std::vector<unsigned char>& upgradeId = {1, 2, 255}) {
        script->searchResult.result = Core::TRANSACTION_SUCCESS;
        script->searchResult.version = version;
        script->searchResult.scope = scope;
        script->searchResult.upgradeId = upgradeId;
    }

    void coreFindsNothing() {
        script->searchResult = {};
        script->searchResult.result = Core::TRANSACTION_FAILED;
    }
};

} // namespace DAX::Tests
