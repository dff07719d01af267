#pragma once

#include <list>
#include <memory>
#include <mutex>
#include <set>
#include <string>

#include "Common/DBUSWrapper/IDBUSProxy.h"
#include "ServiceInterface/IServiceTransaction.h"

namespace DAX::DAXIPC::DBUSLowLevel {

// A transaction over the bus, as CServiceProxy::startNewTransaction() returns it. See CServiceManagerProxy for
// connections and errors.
//
// When the transaction is over (cancelled, replaced by a newer one, its session gone), every call throws
// TransactionInvalidatedException.
//
// Threads: any; calls take turns, so a cancel waits for the end of a running call.
class CServiceTransactionProxy : public Service::IServiceTransaction {
public:
    // `proxy` must have said hello.
    explicit CServiceTransactionProxy(std::shared_ptr<Common::DBUSWrapper::IDBUSProxy> proxy);

    boost::optional<bool> isSearchingPossible() override;
    Service::ServiceTransactionProgress getSearchProgress() override;
    Service::ServiceTransactionProgress getInstallationProgress() override;
    Service::ServiceTransactionProgress getFinalizationProgress() override;

    // Only after getSearchProgress() has reported the end of the search: before, this call ends the service's process.
    Service::ServiceSearchResult getSearchResult() override;
    std::list<std::string> getModelsSearchResult() override;
    void startSearching(std::string searchParameter) override;
    void startModelsSearching() override;
    void startInstallation(const std::set<std::string>& items) override;
    void startFinalization(const std::set<std::string>& items, bool finalizationFlag) override;
    void cancelServiceTransaction(const std::string& reason) override;

private:
    // callRemote(), one call at a time.
    template <const auto& METHOD, class... Args>
    auto call(const Args&... args);

    std::mutex m_mutex; // guards all below
    std::shared_ptr<Common::DBUSWrapper::IDBUSProxy> m_proxy;
};

} // namespace DAX::DAXIPC::DBUSLowLevel
