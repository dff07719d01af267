#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Common/DBUSWrapper/IDBUSProxy.h"
#include "CoreInterface/ICore.h"

namespace DAX::DAXIPC::DBUSLowLevel {

// The update core over the bus.
class CCoreProxy : public Core::ICore {
public:
    CCoreProxy(std::shared_ptr<Common::DBUSWrapper::IDBUSProxy::IDBUSProxyFactory> factory,
               unsigned int activationTimeoutSeconds);

    std::vector<DAXCommon::UpgradeType> getSupportedUpgradeTypes() override;

    // Opens the transaction's own connection, which then says hello; a hello whose activation timed out is said up to
    // three times, a second apart (an interruption point).
    std::shared_ptr<Core::ICoreTransaction> createTransaction(Core::SearchingTransactionParameters parameters) override;
    std::string getCurrentVersion() const override;
    void scheduleFactoryReset() override;

private:
    using IDBUSProxy = Common::DBUSWrapper::IDBUSProxy;

    // Empty when the activation of the remote side timed out.
    std::shared_ptr<Core::ICoreTransaction> initTransaction(std::shared_ptr<IDBUSProxy> proxy,
                                                            const std::string& busName);
    void sendHelloMessage(IDBUSProxy& proxy);

    std::shared_ptr<IDBUSProxy::IDBUSProxyFactory> m_proxyFactory;
    std::shared_ptr<IDBUSProxy> m_proxy;
};

} // namespace DAX::DAXIPC::DBUSLowLevel
