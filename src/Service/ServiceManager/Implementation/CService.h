#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "CoreInterface/ICore.h"
#include "DAXCommon/ServiceTransactionType.h"
#include "ServiceInterface/IService.h"

namespace DAX::Service::ServiceManager {

// One client's session. Its holder keeps it alive; it may be invalidated from any thread. The settings store tells
// other programs the priority of the session; a failure of the store is only logged.
class CService : public IService {
public:
    CService(std::shared_ptr<Core::ICore>& core, DAXCommon::ServiceClientPriority priority,
             const std::string& clientName, DAXCommon::ServiceTransactionType type);

    // Takes no lock, since no other reference exists by then.
    ~CService() override;

    std::shared_ptr<IServiceTransaction> startNewTransaction(DAXCommon::UpgradeType upgradeType) override;
    DAXCommon::ServiceClientPriority getClientPriority() override;
    void invalidate(const std::string& reason) override;

    std::string clientName() const;
    DAXCommon::ServiceTransactionType transactionType() const;

private:
    void stopTransaction(const std::string& reason);
    std::shared_ptr<IServiceTransaction> createServiceTransaction(Core::SearchingTransactionParameters parameters);

    std::shared_ptr<Core::ICore> m_core;
    DAXCommon::ServiceClientPriority m_clientPriority;
    std::string m_clientName;
    DAXCommon::ServiceTransactionType m_transactionType;
    bool m_valid = true;
    std::shared_ptr<IServiceTransaction> m_transaction;
    std::mutex m_mutex; // guards m_valid and m_transaction
};

} // namespace DAX::Service::ServiceManager
