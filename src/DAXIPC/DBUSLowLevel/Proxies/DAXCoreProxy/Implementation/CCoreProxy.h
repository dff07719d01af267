#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Common/DBUSWrapper/IDBUSProxy.h"
#include "CoreInterface/ICore.h"

namespace DAX::DAXIPC::DBUSLowLevel {

// The update core over the bus. The cancel of a transaction may come from another thread; everything else is for one
// thread at a time.
class CCoreProxy : public Core::ICore {
public:
    CCoreProxy(std::shared_ptr<Common::DBUSWrapper::IDBUSProxy::IDBUSProxyFactory> factory,
               unsigned int activationTimeoutSeconds);

    std::vector<DAXCommon::UpgradeType> getSupportedUpgradeTypes() override;

    // Opens the connection of the transaction, which then says hello. A hello whose activation times out is sent up to
    // three times. After each attempt it waits for a second, where the thread can be interrupted.
    std::shared_ptr<Core::ICoreTransaction> createTransaction(Core::SearchingTransactionParameters parameters) override;
    std::string getCurrentVersion() const override;
    void scheduleFactoryReset() override;

private:
    using IDBUSProxy = Common::DBUSWrapper::IDBUSProxy;

    // Null when the activation of the remote side timed out.
    std::shared_ptr<Core::ICoreTransaction> initTransaction(std::shared_ptr<IDBUSProxy> proxy,
                                                            const std::string& busName);
    void sendHelloMessage(IDBUSProxy& proxy);

    std::shared_ptr<IDBUSProxy::IDBUSProxyFactory> m_proxyFactory;
    std::shared_ptr<IDBUSProxy> m_proxy;
};

} // namespace DAX::DAXIPC::DBUSLowLevel
